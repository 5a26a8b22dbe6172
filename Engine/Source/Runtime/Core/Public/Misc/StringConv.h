#pragma once

#include "CoreTypes.h"

#include <string>
#include <string_view>

// Conversion between the tool's 16-bit text and UTF-8 at the edge to the operating system. Invalid input never
// fails: bad bytes and lone surrogates become U+FFFD.
namespace StringConv
{
	// Without bEscape an invalid sequence becomes one U+FFFD and a lone surrogate is written as U+FFFD; with
	// it each invalid byte B becomes U+DC00 + B, and such a lone surrogate is written as the byte B.
	CORE_API std::u16string Utf8ToUtf16(std::string_view Utf8, bool bEscape = false);
	CORE_API std::string Utf16ToUtf8(std::u16string_view Utf16, bool bEscape = false);
}
