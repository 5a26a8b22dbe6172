#include "CoreMinimal.h"
#include "SizelessArchive.h"
#include "packaging/ModArchiveForms.h"

#include <gtest/gtest.h>

#include <cstring>
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

	std::vector<uint8> Saved(FString Value)
	{
		TArray<uint8> Out;
		FMemoryArchive Writer(Out, false);
		SerializeString(Writer, Value);
		return Bytes(Out);
	}

	// Reads one string; Loaded reports whether the archive stayed free of errors.
	FString Loaded(const std::vector<uint8>& In, bool& bOk)
	{
		TArray<uint8> Source = Array(In);
		FMemoryArchive Reader(Source, true);
		FString Value(TEXT("not touched"));
		SerializeString(Reader, Value);
		bOk = !Reader.IsError();
		return Value;
	}

}

TEST(ModArchiveFormsTests, ModFileExampleIsByteExact)
{
	// The fields of a "%d.mod" file in order: number, title, empty second string, map list, magic, version,
	// type, metadata.
	TArray<uint8> Out;
	FMemoryArchive Writer(Out, false);
	FModFileRecord Record;
	Record.Number = 123456789;
	Record.Title = TEXT("abc");
	Record.Serialize(Writer);

	const std::vector<uint8> Expected = {0x15, 0xCD, 0x5B, 0x07, 0x00, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0x61,
										 0x62, 0x63, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x33, 0xFF,
										 0x22, 0xFF, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
	ASSERT_EQ(Expected.size(), 37u);
	EXPECT_EQ(Bytes(Out), Expected);

	FMemoryArchive Reader(Out, true);
	FModFileRecord Read;
	Read.Magic = 0;
	Read.Version = 0;
	Read.Serialize(Reader);
	EXPECT_FALSE(Reader.IsError());
	EXPECT_EQ(Read.Number, 123456789);
	EXPECT_EQ(Read.Title, FString(TEXT("abc")));
	EXPECT_EQ(Read.Magic, ModFileFormat::Magic);
	EXPECT_EQ(Read.Version, 2);
}

TEST(ModArchiveFormsTests, StringFormFollowsItsContent)
{
	EXPECT_EQ(Saved(FString()), (std::vector<uint8>{0, 0, 0, 0}));
	EXPECT_EQ(Saved(FString(TEXT("\x7F"))), (std::vector<uint8>{2, 0, 0, 0, 0x7F, 0}));
	// Anything above 7 bits, even a Latin-1 letter, takes the 16-bit form with a negative length.
	EXPECT_EQ(Saved(FString(TEXT("A\u00E9"))), (std::vector<uint8>{0xFD, 0xFF, 0xFF, 0xFF, 0x41, 0, 0xE9, 0, 0, 0}));

	bool bOk = false;
	EXPECT_EQ(Loaded({0, 0, 0, 0}, bOk), FString());
	EXPECT_TRUE(bOk);
	// The reader takes 8-bit text with high bytes too, one unit per byte.
	EXPECT_EQ(Loaded({3, 0, 0, 0, 0x41, 0xE9, 0}, bOk), FString(TEXT("A\u00E9")));
	EXPECT_TRUE(bOk);
	EXPECT_EQ(Loaded({0xFE, 0xFF, 0xFF, 0xFF, 0x03, 0x26, 0, 0}, bOk), FString(TEXT("\u2603")));
	EXPECT_TRUE(bOk);
	// A length of one is the terminator alone.
	EXPECT_EQ(Loaded({1, 0, 0, 0, 0}, bOk), FString());
	EXPECT_TRUE(bOk);
}

TEST(ModArchiveFormsTests, WideTitleDoublesItsPayloadAndRoundTrips)
{
	const FString Title(TEXT("Caf\u00E9 \u65E5\u672C \U0001F680"));
	const std::vector<uint8> Out = Saved(Title);
	const int32 Units = Title.Len() + 1;
	int32 Length = 0;
	std::memcpy(&Length, Out.data(), 4);
	EXPECT_EQ(Length, -Units);
	EXPECT_EQ(Out.size(), 4u + 2u * Units);
	bool bOk = false;
	EXPECT_EQ(Loaded(Out, bOk), Title) << "surrogate pairs pass through as two units";
	EXPECT_TRUE(bOk);
}

TEST(ModArchiveFormsTests, ArraysAndMapsRoundTripInFileOrder)
{
	TArray<uint8> Out;
	{
		FMemoryArchive Writer(Out, false);
		TArray<FString> Maps = {FString(TEXT("Island")), FString(), FString(TEXT("\u00C9le"))};
		TMap<FString, FString> Meta;
		Meta.Add(TEXT("modtype"), TEXT("3"));
		Meta.Add(TEXT("GUID"), TEXT("0A1B2C3D4E5F60718293A4B5C6D7E8F9"));
		Meta.Add(TEXT("Author"), TEXT("\u00D8ystein"));
		SerializeStringArray(Writer, Maps);
		SerializeStringMap(Writer, Meta);
	}
	FMemoryArchive Reader(Out, true);
	TArray<FString> Maps;
	TMap<FString, FString> Meta;
	SerializeStringArray(Reader, Maps);
	SerializeStringMap(Reader, Meta);
	EXPECT_FALSE(Reader.IsError());
	EXPECT_TRUE(Reader.AtEnd());
	EXPECT_EQ(Maps, (TArray<FString>{FString(TEXT("Island")), FString(), FString(TEXT("\u00C9le"))}));

	TArray<FString> Keys;
	Meta.GetKeys(Keys);
	EXPECT_EQ(Keys, (TArray<FString>{FString(TEXT("modtype")), FString(TEXT("GUID")), FString(TEXT("Author"))}));
	EXPECT_EQ(Meta.FindRef(TEXT("Author")), FString(TEXT("\u00D8ystein")));

	// Written again, the map gives the same bytes: the file's order survives the trip.
	TArray<uint8> Again;
	FMemoryArchive Writer(Again, false);
	SerializeStringArray(Writer, Maps);
	SerializeStringMap(Writer, Meta);
	EXPECT_EQ(Bytes(Again), Bytes(Out));
}

TEST(ModArchiveFormsTests, HostileLengthsFailWithoutCrashOrHugeAllocation)
{
	bool bOk = true;
	const std::vector<std::vector<uint8>> Broken = {
		{0xFF, 0xFF, 0xFF, 0x7F, 'a', 'b', 0},		// 2 GiB of 8-bit text promised, three bytes there
		{0x00, 0x00, 0x00, 0x80, 'a', 0},			// the most negative length
		{0x00, 0x00, 0x00, 0xC0, 'a', 0, 0, 0},	// a billion UTF-16 units promised
		{0x05, 0x00, 0x00, 0x00, 'a', 'b'},			// short by three bytes
		{0x05, 0x00},								// not even a whole length
	};
	for (const std::vector<uint8>& Input : Broken)
	{
		EXPECT_EQ(Loaded(Input, bOk), FString());
		EXPECT_FALSE(bOk);
		// Without a known size the reader must still stop at the real end of the bytes.
		TArray<uint8> Bytes = Array(Input);
		FSizelessArchive Sizeless(Bytes, true);
		FString Value;
		SerializeString(Sizeless, Value);
		EXPECT_TRUE(Sizeless.IsError());
		EXPECT_EQ(Value, FString());
	}

	// Counts that promise more than is there, or less than nothing.
	for (const std::vector<uint8>& Input : {std::vector<uint8>{0xFF, 0xFF, 0xFF, 0x7F, 1, 0, 0, 0, 0},
											 std::vector<uint8>{0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 0, 0, 'x', 0}})
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
