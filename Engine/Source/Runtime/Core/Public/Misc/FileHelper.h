#pragma once

#include "Containers/UnrealString.h"

class IFileManager;

enum class EEncodingOptions
{
	// 8-bit when every unit is at most 0x7F, else UTF-16LE with a byte order mark.
	AutoDetect = 0,
	ForceAnsi,
	ForceUnicode,
	ForceUTF8,
	ForceUTF8WithoutBOM,
};

struct CORE_API FFileHelper
{
	static bool LoadFileToArray(TArray<uint8>& Result, const TCHAR* Filename, uint32 Flags = 0);
	static bool SaveArrayToFile(const TArray<uint8>& Array, const TCHAR* Filename, IFileManager* FileManager = nullptr,
								uint32 WriteFlags = 0);

	// Reads a text file: UTF-16 (either byte order) or UTF-8 behind a byte order mark; without one, UTF-8 when
	// the bytes are valid UTF-8, else one unit per byte. False when the file can't be read.
	static bool LoadFileToString(FString& Result, const TCHAR* Filename, uint32 Flags = 0);
	static bool SaveStringToFile(const FString& String, const TCHAR* Filename,
								 EEncodingOptions EncodingOptions = EEncodingOptions::AutoDetect,
								 IFileManager* FileManager = nullptr, uint32 WriteFlags = 0);

	// Turns the bytes of a text file into a string by the rules of LoadFileToString.
	static FString BytesToString(const uint8* Bytes, int64 Count);
};
