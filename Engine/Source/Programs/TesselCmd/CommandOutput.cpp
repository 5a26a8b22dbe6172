#include "CommandOutput.h"

#include "Serialization/Archive.h"
#include "json/JsonSerializer.h"

#include <cstdio>
#include <functional>
#include <string>

void PrintLine(FILE* Stream, const FString& Text)
{
	const std::string Bytes = Text.ToUtf8();
	std::fwrite(Bytes.data(), 1, Bytes.size(), Stream);
	std::fputc('\n', Stream);
	std::fflush(Stream);
}

void FCommandOutput::Line(const FString& Text) const
{
	if (!bJson)
	{
		PrintLine(stdout, Text);
	}
}

void FCommandOutput::Progress(const FString& Text) const
{
	PrintLine(bJson ? stderr : stdout, Text);
}

void FCommandOutput::Note(const FString& Text)
{
	PrintLine(stderr, Text);
}

namespace
{
	// Takes the tool's JSON text (16-bit units with CR LF line ends) and hands it on as UTF-8 with line feeds,
	// a block at a time, so that a document of any size passes through without standing whole in memory. A
	// surrogate pair or a unit split between two writes is held back until it is whole.
	class FUtf8TextArchive : public FArchive
	{
	public:
		explicit FUtf8TextArchive(std::function<void(const std::string&)> InSink) : Sink(std::move(InSink)) {}

		void Serialize(void* Data, int64 Num) override
		{
			const uint8* Bytes = static_cast<const uint8*>(Data);
			for (int64 Index = 0; Index < Num; ++Index)
			{
				if (!bHaveLowByte)
				{
					LowByte = Bytes[Index];
					bHaveLowByte = true;
					continue;
				}
				bHaveLowByte = false;
				const char16_t Unit = static_cast<char16_t>(LowByte | (Bytes[Index] << 8));
				if (Unit != u'\r')
				{
					Units += Unit;
				}
			}
			if (Units.size() >= BlockUnits)
			{
				Pass(false);
			}
		}

		// Hands on what is left.
		void Finish() { Pass(true); }

	private:
		void Pass(bool bAll)
		{
			size_t Count = Units.size();
			if (!bAll && Count > 0 && Units[Count - 1] >= 0xD800 && Units[Count - 1] <= 0xDBFF)
			{
				--Count;
			}
			if (Count > 0)
			{
				Sink(FString(Units.substr(0, Count)).ToUtf8());
				Units.erase(0, Count);
			}
		}

		static constexpr size_t BlockUnits = 1 << 16;
		std::function<void(const std::string&)> Sink;
		std::u16string Units;
		uint8 LowByte = 0;
		bool bHaveLowByte = false;
	};

	void WriteDocument(const std::function<void(JsonWriter&)>& Write, const std::function<void(const std::string&)>& Sink)
	{
		FUtf8TextArchive Text(Sink);
		{
			// The tool's own writer, so that strings are escaped exactly as in Mods.db.
			JsonWriter Writer(&Text, 0);
			Write(Writer);
			Writer.Close();
		}
		Text.Finish();
		Sink("\n");
	}

	void WriteToStdout(const std::string& Text)
	{
		std::fwrite(Text.data(), 1, Text.size(), stdout);
	}
}

std::string FCommandOutput::ToJsonText(const TSharedRef<FJsonObject>& Document)
{
	std::string Text;
	WriteDocument([&](JsonWriter& Writer) { JsonSerializer::SerializeValue(JsonObject(Document.ToSharedPtr()), FString(), Writer); },
				  [&](const std::string& Block) { Text += Block; });
	return Text;
}

void FCommandOutput::Print(const TSharedRef<FJsonObject>& Document)
{
	PrintWritten([&](JsonWriter& Writer) { JsonSerializer::SerializeValue(JsonObject(Document.ToSharedPtr()), FString(), Writer); });
}

void FCommandOutput::PrintWritten(const std::function<void(JsonWriter&)>& Write)
{
	WriteDocument(Write, WriteToStdout);
	std::fflush(stdout);
}

TSharedPtr<FJsonValue> JsonString(const FString& Value)
{
	return MakeShared<FJsonValueString>(Value);
}

TSharedPtr<FJsonValue> JsonNumber(double Value)
{
	return MakeShared<FJsonValueNumber>(Value);
}

TSharedPtr<FJsonValue> JsonObject(const TSharedPtr<FJsonObject>& Object)
{
	return MakeShared<FJsonValueObject>(Object);
}

TArray<TSharedPtr<FJsonValue>> JsonStrings(const TArray<FString>& Values)
{
	TArray<TSharedPtr<FJsonValue>> Result;
	for (const FString& Value : Values)
	{
		Result.Add(JsonString(Value));
	}
	return Result;
}
