// Feeds arbitrary item files to the readback of the published id after SteamCMD ran. The bytes become text as
// the tool loads the file (FFileHelper::BytesToString: byte order marks, UTF-8, else one unit per byte).
//
// What the reader promises is small enough to write down again here, unit by unit and without the string
// library's searches: the first line that names "publishedfileid" in any letter case decides, lines end at CR,
// LF or both, and its first piece between double quotes that is numeric (an optional sign, digits, at most one
// decimal point) is the id; no such piece, or no such line, reads nothing and leaves the id as it was. The
// reader must agree with that for every text, and whatever it returns must read back from an item file that
// holds just that id.

#include "CoreMinimal.h"
#include "Misc/FileHelper.h"
#include "upload/WorkshopUpload.h"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace
{
	[[noreturn]] void Fail(const char* What, const FString& Text)
	{
		std::fprintf(stderr, "%s\ntext: %s\n", What, Text.ToUtf8().c_str());
		std::abort();
	}

	bool IsNumber(const std::u16string& Piece)
	{
		size_t Pos = Piece.size() > 0 && (Piece[0] == u'-' || Piece[0] == u'+') ? 1 : 0;
		bool bDot = false;
		bool bDigit = false;
		for (; Pos < Piece.size(); ++Pos)
		{
			if (Piece[Pos] >= u'0' && Piece[Pos] <= u'9')
			{
				bDigit = true;
			}
			else if (Piece[Pos] == u'.' && !bDot)
			{
				bDot = true;
			}
			else
			{
				return false;
			}
		}
		return bDigit;
	}

	bool NamesTheKey(const std::u16string& Line)
	{
		static const std::u16string Key = u"publishedfileid";
		for (size_t At = 0; At + Key.size() <= Line.size(); ++At)
		{
			size_t Matched = 0;
			while (Matched < Key.size() && FChar::ToLower(Line[At + Matched]) == Key[Matched])
			{
				++Matched;
			}
			if (Matched == Key.size())
			{
				return true;
			}
		}
		return false;
	}

	std::optional<std::u16string> ExpectedId(const std::u16string& Text)
	{
		std::u16string Line;
		for (size_t Pos = 0; Pos <= Text.size(); ++Pos)
		{
			if (Pos < Text.size() && Text[Pos] != u'\r' && Text[Pos] != u'\n')
			{
				Line += Text[Pos];
				continue;
			}
			if (NamesTheKey(Line))
			{
				std::u16string Piece;
				for (const char16_t Unit : Line + u'"')
				{
					if (Unit != u'"')
					{
						Piece += Unit;
						continue;
					}
					if (IsNumber(Piece))
					{
						return Piece;
					}
					Piece.clear();
				}
				return std::nullopt;
			}
			Line.clear();
		}
		return std::nullopt;
	}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	const FString Text = FFileHelper::BytesToString(Data, static_cast<int64>(Size));
	const FString Untouched = TEXT("untouched");
	FString Id = Untouched;
	const bool bRead = ReadPublishedFileId(Text, Id);
	const std::optional<std::u16string> Expected = ExpectedId(Text.GetStd());
	if (bRead != Expected.has_value())
	{
		Fail(bRead ? "an id was read where the text holds none" : "no id was read where the text holds one", Text);
	}
	if (!bRead)
	{
		if (Id != Untouched)
		{
			Fail("the id changed although nothing was read", Text);
		}
		return 0;
	}
	if (Id.GetStd() != *Expected)
	{
		Fail("the id read is not the first numeric piece on the first line naming the key", Text);
	}
	if (Id.IsEmpty() || !Id.IsNumeric())
	{
		Fail("the id read is empty or not numeric", Text);
	}

	// The id as the tool writes it into the next item file must come back unchanged.
	FString Again;
	if (!ReadPublishedFileId(FString(TEXT("\t\"publishedfileid\"\t\t\"")) + Id + TEXT("\"\n"), Again) || Again != Id)
	{
		Fail("the id read does not read back from an item file holding it", Text);
	}
	return 0;
}
