// Feeds arbitrary bytes to the JSON reader. Every input must end in a document or an error message; a document
// that reads must write, and what it writes must read back and write again to the same text.
//
// Two kinds of document are exempt from the round trip, because the formats can't carry them: a member with an
// empty name (the writer needs a name), and a number that overflowed to infinity while it was read (the writer
// prints it as "inf", which is no JSON token). Both have tests of their own in the unit tests.
//
// The seeds named "mismatched-closers-*" are what this target once found: closers of the wrong kind, some of
// which read as documents. Every run starts by reading them again.

#include "CoreMinimal.h"
#include "Serialization/Archive.h"
#include "json/JsonSerializer.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace
{
	TArray<uint8> WriteDocument(const TSharedPtr<FJsonObject>& Object)
	{
		TArray<uint8> Bytes;
		FMemoryArchive Archive(Bytes, false);
		JsonSerializer::Serialize(Object.ToSharedRef(), MakeShared<JsonWriter>(&Archive, 0));
		return Bytes;
	}

	// Whether the document holds something that the writer can't write back as it was read.
	bool CannotRoundTrip(const TSharedPtr<FJsonObject>& Root)
	{
		TArray<TSharedPtr<FJsonValue>> Work;
		Work.Add(MakeShared<FJsonValueObject>(Root));
		while (Work.Num() > 0)
		{
			const TSharedPtr<FJsonValue> Value = Work.Pop();
			if (Value->Type == EJson::Number && !std::isfinite(Value->AsNumber()))
			{
				return true;
			}
			if (const TSharedPtr<FJsonObject>& Object = Value->AsObject())
			{
				for (const auto& Pair : Object->Values)
				{
					if (Pair.Key.IsEmpty())
					{
						return true;
					}
					Work.Add(Pair.Value);
				}
			}
			for (const TSharedPtr<FJsonValue>& Element : Value->AsArray())
			{
				Work.Add(Element);
			}
		}
		return false;
	}

	bool ReadDocument(TArray<uint8>& Bytes, TSharedPtr<FJsonObject>& OutObject, FString& OutError)
	{
		FMemoryArchive Archive(Bytes, true);
		TSharedRef<JsonReader> Reader = MakeShared<JsonReader>(&Archive);
		const bool bOk = JsonSerializer::Deserialize(Reader, OutObject);
		OutError = Reader->GetErrorMessage();
		return bOk;
	}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	TArray<uint8> Input(Data, static_cast<int32>(Size));
	TSharedPtr<FJsonObject> Document;
	FString Error;
	if (!ReadDocument(Input, Document, Error))
	{
		return 0;
	}
	if (!Error.IsEmpty())
	{
		std::fprintf(stderr, "a document was returned together with an error\n");
		std::abort();
	}
	if (CannotRoundTrip(Document))
	{
		return 0;
	}
	TArray<uint8> Written = WriteDocument(Document);
	TSharedPtr<FJsonObject> Again;
	if (!ReadDocument(Written, Again, Error))
	{
		std::fprintf(stderr, "written text does not read back: %s\n", Error.ToUtf8().c_str());
		std::abort();
	}
	if (WriteDocument(Again) != Written)
	{
		std::fprintf(stderr, "text changed on a second round trip\n");
		std::abort();
	}
	return 0;
}
