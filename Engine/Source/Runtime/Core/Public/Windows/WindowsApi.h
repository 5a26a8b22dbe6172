#pragma once

// The one way into <windows.h>. It names things the core names too: its TCHAR and TEXT give way to ours, and
// its macros that rename DeleteFile, MoveFile, CopyFile and CreateDirectory to their wide forms are undone, so
// that our own functions of those names keep them. Windows calls are written with their W names.

#include "CoreTypes.h"

#define TCHAR WINDOWS_TCHAR
#pragma push_macro("TEXT")
#undef TEXT
#include <windows.h>
#undef TCHAR
#undef TEXT
#pragma pop_macro("TEXT")

#undef DeleteFile
#undef MoveFile
#undef CopyFile
#undef CreateDirectory
#undef LoadLibrary
#undef GetCommandLine
#undef min
#undef max

namespace WindowsApi
{
	// Windows keeps text in 16-bit units, as we do; only the type's name differs.
	inline const wchar_t* Wide(const TCHAR* Text) { return reinterpret_cast<const wchar_t*>(Text); }
	inline const TCHAR* Ours(const wchar_t* Text) { return reinterpret_cast<const TCHAR*>(Text); }
}
