#include "Misc/Utf8StreamDecoder.h"

#include "Utf8Sequence.h"

#include <string_view>

namespace
{
// Length of an unfinished sequence at the end of Bytes. The decoder never lets a sequence reach past
// a byte that is no continuation byte, so cutting before the last lead byte decodes exactly as the
// uncut stream would.
size_t IncompleteTailLength(std::string_view Bytes)
{
	const size_t Size = Bytes.size();
	for (size_t Back = 1; Back <= 4 && Back <= Size; ++Back)
	{
		const unsigned char Byte = static_cast<unsigned char>(Bytes[Size - Back]);
		if (!Utf8Sequence::IsContinuation(Byte))
		{
			return static_cast<size_t>(Utf8Sequence::ContinuationsAfter(Byte)) >= Back ? Back : 0;
		}
	}
	return 0;
}

FString ToText(std::string_view Bytes)
{
	std::u16string Text = StringConv::Utf8ToUtf16(Bytes);
	// Not memchr: an empty read may come as a null pointer, which memchr must never be given.
	if (Bytes.find('\0') == std::string_view::npos)
	{
		return FString(std::move(Text));
	}
	for (char16_t& Unit : Text)
	{
		if (Unit == u'\0')
		{
			Unit = u'\uFFFD';
		}
	}
	return FString(std::move(Text));
}
} // namespace

FString FUtf8StreamDecoder::Decode(const char* Bytes, size_t Count)
{
	std::string_view Input(Bytes, Count);
	FString Text;
	if (!Tail.empty())
	{
		// Finish the kept sequence alone, so the large rest is decoded without being copied first. It
		// ends where the decoder would end it in the uncut stream: when full or at a non-continuation byte.
		const size_t Needed = 1 + static_cast<size_t>(Utf8Sequence::ContinuationsAfter(static_cast<unsigned char>(Tail[0])));
		size_t Taken = 0;
		while (Tail.size() < Needed && Taken < Input.size() &&
			   Utf8Sequence::IsContinuation(static_cast<unsigned char>(Input[Taken])))
		{
			Tail += Input[Taken++];
		}
		Input.remove_prefix(Taken);
		if (Tail.size() < Needed && Input.empty())
		{
			return Text;
		}
		Text = ToText(Tail);
		Tail.clear();
	}
	const size_t Keep = IncompleteTailLength(Input);
	FString Rest = ToText(Input.substr(0, Input.size() - Keep));
	Tail.assign(Input.substr(Input.size() - Keep));
	if (Text.IsEmpty())
	{
		return Rest;
	}
	Text += Rest;
	return Text;
}

FString FUtf8StreamDecoder::Flush()
{
	FString Text = ToText(Tail);
	Tail.clear();
	return Text;
}
