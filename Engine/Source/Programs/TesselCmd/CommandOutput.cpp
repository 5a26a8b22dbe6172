#include "CommandOutput.h"

#include "Serialization/Archive.h"
#include "json/JsonSerializer.h"

#include <cstdio>

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

std::string FCommandOutput::ToJsonText(const TSharedRef<FJsonObject>& Document)
{
	// The tool's own writer, so that strings are escaped exactly as in Mods.db; it writes 16-bit units with
	// CR LF line ends, which become UTF-8 with line feeds here.
	TArray<uint8> Bytes;
	FMemoryArchive Archive(Bytes, false);
	JsonSerializer::Serialize(Document, MakeShared<JsonWriter>(&Archive, 0));
	std::u16string Units;
	Units.reserve(static_cast<size_t>(Bytes.Num() / 2));
	for (int32 Index = 0; Index + 1 < Bytes.Num(); Index += 2)
	{
		const char16_t Unit = static_cast<char16_t>(Bytes[Index] | (Bytes[Index + 1] << 8));
		if (Unit != u'\r')
		{
			Units += Unit;
		}
	}
	return FString(std::move(Units)).ToUtf8() + "\n";
}

void FCommandOutput::Print(const TSharedRef<FJsonObject>& Document)
{
	const std::string Text = ToJsonText(Document);
	std::fwrite(Text.data(), 1, Text.size(), stdout);
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
