#include "CoreMinimal.h"
#include "SizelessArchive.h"
#include "TestKit.h"
#include "packaging/ModArchiveForms.h"

#include <gtest/gtest.h>

#include <vector>

using namespace ModArchiveForms;

namespace
{
	std::vector<uint8> Bytes(const TArray<uint8>& Array)
	{
		return std::vector<uint8>(Array.GetData(), Array.GetData() + Array.Num());
	}

	TArray<uint8> Array(const std::vector<uint8>& Vector)
	{
		return TArray<uint8>(Vector.data(), static_cast<int32>(Vector.size()));
	}
}

// Every field of a "%d.mod" file in its byte form and order: number, title, an empty second string, map list,
// magic, version, type, and the metadata in the map's order. Strings are 8-bit while every unit is at most 0x7F,
// else UTF-16 with a negative length, a character of two units as its two units.
TEST(ModArchiveFormsTests, ModFileWithEveryFieldIsByteExact)
{
	FModFileRecord Record;
	Record.Number = 123456789;
	Record.Title = TEXT("abc");
	Record.Maps = {FString(TEXT("Island")), FString(), FString(TEXT("\u00C9le")), FString(TEXT("\x7F")), FString(u"\U0001F680!")};
	Record.Type = 3;
	Record.Metadata.Add(TEXT("modtype"), TEXT("3"));
	Record.Metadata.Add(TEXT("GUID"), TEXT("0A1B2C3D4E5F60718293A4B5C6D7E8F9"));
	Record.Metadata.Add(TEXT("Author"), TEXT("\u00D8ystein"));
	TArray<uint8> Out;
	FMemoryArchive Writer(Out, false);
	Record.Serialize(Writer);
	const std::string Golden = ReadGolden("mod-file-every-field.mod");
	EXPECT_EQ(Bytes(Out), std::vector<uint8>(Golden.begin(), Golden.end()));

	// Read back, with the fixed fields cleared first, and written again: the same bytes.
	FMemoryArchive Reader(Out, true);
	FModFileRecord Read;
	Read.Magic = 0;
	Read.Version = 0;
	Read.Serialize(Reader);
	EXPECT_FALSE(Reader.IsError());
	EXPECT_TRUE(Reader.AtEnd());
	TArray<uint8> Again;
	FMemoryArchive Rewriter(Again, false);
	Read.Serialize(Rewriter);
	EXPECT_EQ(Bytes(Again), Bytes(Out));
}

// A read replaces whatever the value held: the empty form, 8-bit text with high bytes (one unit per byte, a form
// the writer never makes), and a length of one, the terminator alone.
TEST(ModArchiveFormsTests, StringFormsReadOverWhateverTheValueHeld)
{
	for (const auto& [Form, Value] : {std::pair{std::vector<uint8>{0, 0, 0, 0}, FString()},
									  std::pair{std::vector<uint8>{3, 0, 0, 0, 0x41, 0xE9, 0}, FString(TEXT("A\u00E9"))},
									  std::pair{std::vector<uint8>{1, 0, 0, 0, 0}, FString()}})
	{
		TArray<uint8> In = Array(Form);
		FMemoryArchive Reader(In, true);
		FString Read(TEXT("not touched"));
		SerializeString(Reader, Read);
		EXPECT_FALSE(Reader.IsError());
		EXPECT_EQ(Read, Value);
	}
}

// A length or count that promises more than is there, or less than nothing, fails without a crash or a huge
// allocation, with or without a known size, and leaves at most what was really there.
TEST(ModArchiveFormsTests, HostileLengthsFailWithoutCrashOrHugeAllocation)
{
	const std::vector<uint8> Strings[] = {
		{0xFF, 0xFF, 0xFF, 0x7F, 'a', 'b', 0},	// 2 GiB of 8-bit text promised, three bytes there
		{0x00, 0x00, 0x00, 0x80, 'a', 0},		// the most negative length
		{0x00, 0x00, 0x00, 0xC0, 'a', 0, 0, 0}, // a billion UTF-16 units promised
		{0x05, 0x00, 0x00, 0x00, 'a', 'b'},		// short by three bytes
		{0x05, 0x00},							// not even a whole length
	};
	for (const std::vector<uint8>& Input : Strings)
	{
		TArray<uint8> Source = Array(Input);
		FMemoryArchive Sized(Source, true);
		FSizelessArchive Sizeless(Source, true);
		for (FArchive* Reader : {static_cast<FArchive*>(&Sized), static_cast<FArchive*>(&Sizeless)})
		{
			FString Value(TEXT("not touched"));
			SerializeString(*Reader, Value);
			EXPECT_TRUE(Reader->IsError());
			EXPECT_EQ(Value, FString());
		}
	}
	for (const std::vector<uint8>& Input :
		 {std::vector<uint8>{0xFF, 0xFF, 0xFF, 0x7F, 1, 0, 0, 0, 0}, std::vector<uint8>{0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 0, 0, 'x', 0}})
	{
		TArray<uint8> Source = Array(Input);
		FMemoryArchive ArrayReader(Source, true);
		TArray<FString> List;
		SerializeStringArray(ArrayReader, List);
		EXPECT_TRUE(ArrayReader.IsError());
		EXPECT_LE(List.Num(), 1);
		FMemoryArchive MapReader(Source, true);
		TMap<FString, FString> Map;
		SerializeStringMap(MapReader, Map);
		EXPECT_TRUE(MapReader.IsError());
		EXPECT_LE(Map.Num(), 1);
	}
}
