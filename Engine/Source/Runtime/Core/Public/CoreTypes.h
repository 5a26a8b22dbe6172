#pragma once

// Fixed-width names in the engine's style, the 16-bit character type and the assertion macros.

#include <cstddef>
#include <cstdint>

using int8 = std::int8_t;
using int16 = std::int16_t;
using int32 = std::int32_t;
using int64 = std::int64_t;
using uint8 = std::uint8_t;
using uint16 = std::uint16_t;
using uint32 = std::uint32_t;
using uint64 = std::uint64_t;
using SIZE_T = std::size_t;

// Every text inside the tool is held in 16-bit units, as the files it reads and writes need.
using TCHAR = char16_t;
using ANSICHAR = char;
using UTF8CHAR = char;

#define TEXT_PASTE(x) u##x
#define TEXT(x) TEXT_PASTE(x)

#define INDEX_NONE (-1)
#define MAX_int32 (0x7fffffff)

#if defined(_WIN32) && defined(__GNUC__)
// mingw's linker exports every symbol of a library that marks none for export.
#define CORE_API
#define FORCENOINLINE __attribute__((noinline))
#elif defined(__GNUC__)
#define CORE_API __attribute__((visibility("default")))
#define FORCENOINLINE __attribute__((noinline))
#else
#define CORE_API
#define FORCENOINLINE
#endif

namespace CoreAssert
{
	// Reports a failed assertion with its words and stops the process; assertions guard programming errors only.
	[[noreturn]] CORE_API void Fail(const char* Expression, const char* File, int Line, const char* Message = nullptr);
}

#define check(expr)                                                                                                    \
	do                                                                                                                 \
	{                                                                                                                  \
		if (!(expr))                                                                                                   \
			::CoreAssert::Fail(#expr, __FILE__, __LINE__);                                                             \
	} while (0)

#define checkf(expr, msg)                                                                                              \
	do                                                                                                                 \
	{                                                                                                                  \
		if (!(expr))                                                                                                   \
			::CoreAssert::Fail(#expr, __FILE__, __LINE__, msg);                                                        \
	} while (0)

#define checkNoEntry() ::CoreAssert::Fail("unreachable", __FILE__, __LINE__)
