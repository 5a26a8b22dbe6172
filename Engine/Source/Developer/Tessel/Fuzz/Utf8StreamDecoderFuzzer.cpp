// Feeds bytes to the UTF-8 stream decoder cut into pieces that the input itself chooses. The decoder promises
// that the cuts don't matter, so every way of cutting must give the text of the uncut stream, and that text is
// the conversion at the operating system's edge (StringConv::Utf8ToUtf16) with each NUL made U+FFFD.
//
// Input: one byte whose low five bits give the number of cuts, that many bytes each giving the length of one
// piece (0 makes an empty read), then the stream; what the pieces leave over is the last piece.

#include "CoreMinimal.h"
#include "Misc/Utf8StreamDecoder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace
{
	[[noreturn]] void Fail(const char* What, std::string_view Bytes)
	{
		std::fprintf(stderr, "%s (stream of %zu bytes)\n", What, Bytes.size());
		std::abort();
	}

	// The text a stream must decode to when it ends after Bytes.
	std::u16string Expected(std::string_view Bytes)
	{
		std::u16string Text = StringConv::Utf8ToUtf16(Bytes);
		for (char16_t& Unit : Text)
		{
			if (Unit == u'\0')
			{
				Unit = u'\uFFFD';
			}
		}
		return Text;
	}

	// Every high surrogate followed by a low one and no low one alone: the decoder never makes half a pair.
	bool IsWellFormed(const std::u16string& Text)
	{
		for (size_t Index = 0; Index < Text.size(); ++Index)
		{
			const char16_t Unit = Text[Index];
			if (Unit >= 0xD800 && Unit <= 0xDBFF)
			{
				if (Index + 1 >= Text.size() || Text[Index + 1] < 0xDC00 || Text[Index + 1] > 0xDFFF)
				{
					return false;
				}
				++Index;
			}
			else if (Unit >= 0xDC00 && Unit <= 0xDFFF)
			{
				return false;
			}
		}
		return true;
	}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	if (Size == 0)
	{
		return 0;
	}
	const size_t Cuts = Data[0] & 0x1F;
	if (Size < 1 + Cuts)
	{
		return 0;
	}
	const std::string_view Bytes(reinterpret_cast<const char*>(Data) + 1 + Cuts, Size - 1 - Cuts);

	FUtf8StreamDecoder Whole;
	std::u16string WholeText = Whole.Decode(Bytes.data(), Bytes.size()).GetStd();
	WholeText += Whole.Flush().GetStd();
	if (WholeText != Expected(Bytes))
	{
		Fail("the uncut stream does not decode as Utf8ToUtf16 with NUL made U+FFFD", Bytes);
	}
	if (WholeText.find(u'\0') != std::u16string::npos)
	{
		Fail("a NUL reached the text", Bytes);
	}
	if (!IsWellFormed(WholeText))
	{
		Fail("the text holds a lone surrogate", Bytes);
	}

	std::vector<size_t> Pieces;
	size_t Left = Bytes.size();
	for (size_t Index = 0; Index < Cuts; ++Index)
	{
		const size_t Length = std::min<size_t>(Data[1 + Index], Left);
		Pieces.push_back(Length);
		Left -= Length;
	}
	Pieces.push_back(Left);

	FUtf8StreamDecoder Cut;
	std::u16string CutText;
	size_t Offset = 0;
	for (const size_t Length : Pieces)
	{
		CutText += Cut.Decode(Bytes.data() + Offset, Length).GetStd();
		Offset += Length;
		// Had the stream ended here, the text so far and what the decoder kept back must make the text of the
		// shorter stream; what is kept back is at most one unfinished sequence, so at most one U+FFFD.
		FUtf8StreamDecoder Ending = Cut;
		const std::u16string Rest = Ending.Flush().GetStd();
		if (Rest.size() > 1 || (Rest.size() == 1 && Rest[0] != u'\uFFFD'))
		{
			Fail("more than one unfinished sequence was kept back", Bytes);
		}
		if (CutText + Rest != Expected(Bytes.substr(0, Offset)))
		{
			Fail("a stream cut short does not decode as the same bytes uncut", Bytes);
		}
	}
	CutText += Cut.Flush().GetStd();
	if (CutText != WholeText)
	{
		Fail("the text depends on where the bytes were cut", Bytes);
	}
	if (!Cut.Flush().IsEmpty() || !Cut.Decode(nullptr, 0).IsEmpty())
	{
		Fail("a flushed decoder still held something", Bytes);
	}
	return 0;
}
