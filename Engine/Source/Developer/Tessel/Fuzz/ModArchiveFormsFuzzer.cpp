// Feeds arbitrary bytes to the readers of the mod description files, each file read field by field as the
// game and the tool read it: "mod.info" (a string, a string list), "modmeta.info" (a string map) and "%d.mod"
// (a number, two strings, a string list, magic, version, type byte, a string map).
//
// - A string whose length can't be honoured leaves the value empty and the archive in error.
// - An archive that can't tell its size (no Tell) must come to the same values and the same error as one that
//   can; it only takes longer to find out that a length lies. Memory stays with the bytes really there either
//   way, which the fuzzer's memory limit holds to. Strings, lists and maps read after a failure are empty in
//   both; plain numbers read after one are left out of the comparison.
// - Whatever reads without error writes, reads back to the same values with every byte consumed, and writes
//   again to the same bytes.

#include "CoreMinimal.h"
#include "Serialization/Archive.h"
#include "SizelessArchive.h"
#include "packaging/ModArchiveForms.h"

#include <type_traits>
#include <cstdio>
#include <cstdlib>

namespace
{
	[[noreturn]] void Fail(const char* Form, const char* What)
	{
		std::fprintf(stderr, "%s: %s\n", Form, What);
		std::abort();
	}

	bool SameMap(const TMap<FString, FString>& A, const TMap<FString, FString>& B)
	{
		if (A.Num() != B.Num())
		{
			return false;
		}
		auto Other = B.begin();
		for (const auto& Pair : A)
		{
			if (Pair.Key != Other->Key || Pair.Value != Other->Value)
			{
				return false;
			}
			++Other;
		}
		return true;
	}

	struct FModInfo
	{
		static constexpr const char* Name = "mod.info";
		FString Leading;
		TArray<FString> Maps;

		void Serialize(FArchive& Ar)
		{
			ModArchiveForms::SerializeString(Ar, Leading);
			if (Ar.IsLoading() && Ar.IsError() && !Leading.IsEmpty())
			{
				Fail(Name, "a string that failed to read is not empty");
			}
			ModArchiveForms::SerializeStringArray(Ar, Maps);
		}
		bool operator==(const FModInfo& Other) const { return Leading == Other.Leading && Maps == Other.Maps; }
	};

	struct FModMeta
	{
		static constexpr const char* Name = "modmeta.info";
		TMap<FString, FString> Metadata;

		void Serialize(FArchive& Ar) { ModArchiveForms::SerializeStringMap(Ar, Metadata); }
		bool operator==(const FModMeta& Other) const { return SameMap(Metadata, Other.Metadata); }
	};

	struct FModFile : FModFileRecord
	{
		static constexpr const char* Name = "%d.mod";

		void Serialize(FArchive& Ar)
		{
			bool bFailedBeforeFixedFields = false;
			VisitFields(
				[&](const TCHAR* Field, auto& Value)
				{
					const bool bFixedField = FString(Field) == TEXT("magic");
					if (bFixedField)
					{
						bFailedBeforeFixedFields = Ar.IsError();
					}
					SerializeField(Ar, Value);
					if constexpr (std::is_same_v<std::decay_t<decltype(Value)>, FString>)
					{
						if (FString(Field) == TEXT("title") && Ar.IsLoading() && Ar.IsError() && !Value.IsEmpty())
						{
							Fail(Name, "a string that failed to read is not empty");
						}
					}
				});
			if (Ar.IsLoading() && bFailedBeforeFixedFields)
			{
				// A number read after a failure is whatever the archive has at its position, which differs
				// between archives that found the failure at different places; nothing vouches for it.
				Magic = 0;
				Version = 0;
				Type = 0;
			}
		}
		bool operator==(const FModFile& Other) const
		{
			return Number == Other.Number && Title == Other.Title && Second == Other.Second && Maps == Other.Maps && Magic == Other.Magic &&
				   Version == Other.Version && Type == Other.Type && SameMap(Metadata, Other.Metadata);
		}
	};

	template <typename FormType>
	TArray<uint8> Write(FormType& Value)
	{
		TArray<uint8> Bytes;
		FMemoryArchive Writer(Bytes, false);
		Value.Serialize(Writer);
		if (Writer.IsError())
		{
			Fail(FormType::Name, "a value that was read could not be written");
		}
		return Bytes;
	}

	template <typename FormType>
	void Check(TArray<uint8>& Input)
	{
		FormType Value;
		FMemoryArchive Reader(Input, true);
		Value.Serialize(Reader);

		FormType Sizeless;
		FSizelessArchive SizelessReader(Input, true);
		Sizeless.Serialize(SizelessReader);
		if (SizelessReader.IsError() != Reader.IsError() || !(Sizeless == Value))
		{
			Fail(FormType::Name, "a reader without a known size read something else");
		}
		if (Reader.IsError())
		{
			return;
		}

		TArray<uint8> Written = Write(Value);
		FormType Again;
		FMemoryArchive ReadAgain(Written, true);
		Again.Serialize(ReadAgain);
		if (ReadAgain.IsError() || !(Again == Value))
		{
			Fail(FormType::Name, "what was written does not read back to the same values");
		}
		if (ReadAgain.Tell() != Written.Num())
		{
			Fail(FormType::Name, "what was written holds bytes that reading it does not consume");
		}
		if (Write(Again) != Written)
		{
			Fail(FormType::Name, "the values read back write other bytes");
		}
	}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	TArray<uint8> Input(Data, static_cast<int32>(Size));
	Check<FModInfo>(Input);
	Check<FModMeta>(Input);
	Check<FModFile>(Input);
	return 0;
}
