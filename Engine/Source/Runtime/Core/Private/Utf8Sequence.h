#pragma once

// How UTF-8 sequences begin, shared by the string codec and the stream decoder so that both cut text the same way.
namespace Utf8Sequence
{
	// Bytes that a lead byte asks to follow it, or 0 for a byte that starts no multi-byte sequence: ASCII, a
	// continuation byte, an overlong lead (0xC0, 0xC1) or a lead beyond U+10FFFF (0xF5 and up).
	inline int ContinuationsAfter(unsigned char Lead)
	{
		if (Lead >= 0xC2 && Lead <= 0xDF)
		{
			return 1;
		}
		if (Lead >= 0xE0 && Lead <= 0xEF)
		{
			return 2;
		}
		if (Lead >= 0xF0 && Lead <= 0xF4)
		{
			return 3;
		}
		return 0;
	}

	inline bool IsContinuation(unsigned char Byte) { return (Byte & 0xC0) == 0x80; }

	// The code point bits a lead byte carries, for a lead with Continuations following bytes.
	inline char32_t LeadBits(unsigned char Lead, int Continuations) { return Lead & (0x7F >> (Continuations + 1)); }

	// The smallest code point a sequence of that many following bytes may carry; anything less is overlong.
	inline char32_t SmallestCodePoint(int Continuations)
	{
		return Continuations == 1 ? 0x80 : Continuations == 2 ? 0x800 : 0x10000;
	}
}
