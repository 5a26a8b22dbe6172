#pragma once

// What every stand-in program shares: an entry point that hands on the arguments as UTF-8 on every system,
// and the two ways a misbehaving program ends, a crash and a hang.

#include "CoreMinimal.h"
#include "HAL/PlatformProcess.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>
#ifndef _WIN32
#include <unistd.h>
#endif
#ifdef _WIN32
#include "Windows/WindowsApi.h"
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#endif

namespace StandIn
{
	using FMain = int (*)(int ArgC, char** ArgV);

	// A path for the standard library's files: wide on Windows, so that any letter in it reaches the system.
	inline std::filesystem::path FileSystemPath(const FString& Path)
	{
#ifdef _WIN32
		return std::filesystem::path(WindowsApi::Wide(*Path));
#else
		return std::filesystem::path(Path.ToNative());
#endif
	}

	// An environment variable's value, empty when unset; read wide on Windows for the same reason.
	inline FString Environment(const char* Name)
	{
#ifdef _WIN32
		const std::wstring WideName(Name, Name + std::char_traits<char>::length(Name));
		const wchar_t* Value = _wgetenv(WideName.c_str());
		return Value ? FString(WindowsApi::Ours(Value)) : FString();
#else
		const char* Value = std::getenv(Name);
		return Value ? FString::FromNative(Value) : FString();
#endif
	}

	// When TESSEL_STANDIN_ENVIRONMENT_OUT names a file, appends the program's name and then every variable of the
	// environment it was started with, one per line, so that a test sees what a child inherits.
	inline void RecordEnvironment(const char* Program)
	{
		const FString Out = Environment("TESSEL_STANDIN_ENVIRONMENT_OUT");
		if (Out.IsEmpty())
		{
			return;
		}
		std::ofstream Record(FileSystemPath(Out), std::ios::app | std::ios::binary);
		Record << "[" << std::filesystem::path(Program).filename().string() << "]\n";
#ifdef _WIN32
		wchar_t* Block = GetEnvironmentStringsW();
		for (const wchar_t* Entry = Block; Block && *Entry; Entry += std::char_traits<wchar_t>::length(Entry) + 1)
		{
			Record << FString(WindowsApi::Ours(Entry)).ToUtf8() << "\n";
		}
		FreeEnvironmentStringsW(Block);
#else
		for (char** Entry = environ; *Entry; ++Entry)
		{
			Record << *Entry << "\n";
		}
#endif
	}

	[[noreturn]] inline void HangForever()
	{
		for (;;)
		{
			std::this_thread::sleep_for(std::chrono::hours(1));
		}
	}

	// Ends the program as a real fault does: a segmentation fault on POSIX, an access violation on Windows.
	[[noreturn]] inline void Crash()
	{
#ifdef _WIN32
		*static_cast<volatile int*>(nullptr) = 0;
#endif
		// The default action, so that a sanitizer build dies of the signal too instead of reporting it.
		std::signal(SIGSEGV, SIG_DFL);
		std::raise(SIGSEGV);
		std::abort();
	}

#ifdef _WIN32
	// The wide entry point's arguments, so that a kit path outside the ANSI code page arrives whole.
	inline int RunWide(int ArgC, wchar_t** WideArgV, FMain Main)
	{
		std::vector<std::string> Utf8;
		for (int Index = 0; Index < ArgC; ++Index)
		{
			const int Size = WideCharToMultiByte(CP_UTF8, 0, WideArgV[Index], -1, nullptr, 0, nullptr, nullptr);
			std::string Argument(Size > 0 ? static_cast<size_t>(Size) : 1u, '\0');
			WideCharToMultiByte(CP_UTF8, 0, WideArgV[Index], -1, Argument.data(), Size, nullptr, nullptr);
			Argument.resize(std::char_traits<char>::length(Argument.c_str()));
			Utf8.push_back(std::move(Argument));
		}
		std::vector<char*> Pointers;
		for (std::string& Argument : Utf8)
		{
			Pointers.push_back(Argument.data());
		}
		Pointers.push_back(nullptr);
		// A crash ends the program with its code at once: no dialog or debugger waits for someone to answer.
		SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
		// Bytes go out as written: no line break becomes CR LF on the way.
		_setmode(_fileno(stdout), _O_BINARY);
		_setmode(_fileno(stderr), _O_BINARY);
		RecordEnvironment(Pointers[0]);
		return Main(ArgC, Pointers.data());
	}
#endif
}

// Defines the program's entry point around Main(int, char**). Windows builds link with -municode.
#ifdef _WIN32
#define TESSEL_STAND_IN_MAIN(Main) \
	int wmain(int ArgC, wchar_t** WideArgV) { return StandIn::RunWide(ArgC, WideArgV, Main); }
#else
#define TESSEL_STAND_IN_MAIN(Main) \
	int main(int ArgC, char** ArgV) \
	{ \
		StandIn::RecordEnvironment(ArgV[0]); \
		return Main(ArgC, ArgV); \
	}
#endif
