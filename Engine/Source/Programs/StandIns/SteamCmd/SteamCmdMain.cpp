// Stands in for Valve's SteamCMD as the tool runs it, placed in a kit at ModTools/SteamCMD/steamcmd.exe:
//
//   steamcmd.exe +login <user> <password> [<Steam Guard code>] +workshop_build_item <item file> +quit
//
// Commands run in order; each takes the arguments up to the next one that begins with "+". The item file is
// read as Valve's KeyValues text and checked as the Workshop checks an item: a "workshopitem" block, a
// numeric "appid", a "contentfolder" that exists and holds files, a "previewfile" that exists and is at most
// 1 MB, a "title" of at most 128 characters, a "description" and a "changenote" of at most 8,000. Paths in
// the file are Windows paths: each backslash stands for a "/".
//
// The account: any user name with any non-empty password logs in, and it has no Steam Guard. A third login
// argument is taken as a Steam Guard code, as SteamCMD takes it, so a password that a blank split in two
// logs in with its first half as the password, which is wrong: the login fails with "Invalid Password". A
// login with a password, given or typed at its prompt, caches it (config/loginusers/<user> beside the
// program); "+login <user>" alone then logs in, as SteamCMD does on a machine where the user has logged in
// before.
//
// On success the item is published and its id written into the item file as a "publishedfileid" pair: a new
// id for an item without one (from 2900000001 up, counted in workshop/last_publishedfileid.txt), the same id
// for an update. Updating an id that this stand-in never published, or that another user published, fails
// with "Access Denied". Published items are kept as workshop/<appid>/<id>.vdf, with their title, texts,
// visibility, owner and the sizes that arrived. That "workshop" folder is beside the program, or the folder
// that TESSEL_STEAMCMD_WORKSHOP names, so that several copies of a kit can share one Workshop. Every line
// printed is also appended to logs/workshop_log.txt beside the program. The password is never printed or
// written.
//
// Misbehaviour for tests and demos, chosen by the environment variable TESSEL_STEAMCMD_MODE or by a file
// "steamcmd.mode" beside the program (the variable wins):
//   wrong-password  every login fails with "Invalid Password", a cached one too
//   steam-guard     a login without a code asks for one, reads standard input and fails at its end
//   network         every login fails with "No Connection"
//   crash           ends by SIGSEGV while the content uploads
//   hang            sleeps for ever while the content uploads
//   letters-id      succeeds but writes an id with letters in it
//   no-id           succeeds but leaves the item file as it was

#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "KeyValuesText.h"
#include "Misc/FileHelper.h"
#include "StandInMain.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace
{
	constexpr int64 MaxPreviewBytes = 1024 * 1024;
	constexpr int32 MaxTitleLength = 128;
	constexpr int32 MaxTextLength = 8000;
	constexpr uint64 FirstPublishedId = 2900000001ull;

	FString ProgramDir()
	{
		const FString Program = FPlatformProcess::ExecutablePath();
		return Program.IsEmpty() ? FString(TEXT(".")) : FPaths::GetPath(Program);
	}

	IPlatformFile& Files()
	{
		return FPlatformFileManager::Get().GetPlatformFile();
	}

	void Print(const FString& Line)
	{
		std::fputs(Line.ToUtf8().c_str(), stdout);
		std::fputc('\n', stdout);
		std::fflush(stdout);
		const FString LogDir = ProgramDir() / TEXT("logs");
		Files().CreateDirectoryTree(*LogDir);
		std::ofstream Log(StandIn::FileSystemPath(LogDir / TEXT("workshop_log.txt")), std::ios::app | std::ios::binary);
		Log << Line.ToUtf8() << '\n';
	}

	FString ReadMode()
	{
		if (const char* FromEnvironment = std::getenv("TESSEL_STEAMCMD_MODE"); FromEnvironment && *FromEnvironment)
		{
			return FString::FromUtf8(FromEnvironment);
		}
		FString FromFile;
		if (FFileHelper::LoadFileToString(FromFile, *(ProgramDir() / TEXT("steamcmd.mode"))))
		{
			return FromFile.TrimStartAndEnd();
		}
		return FString();
	}

	// A Windows path as the item file gives it, as a path of this machine.
	FString LocalPath(const FString& WindowsPath)
	{
		return WindowsPath.Replace(TEXT("\\"), TEXT("/"), ESearchCase::CaseSensitive);
	}

	bool IsDigits(const FString& Text)
	{
		if (Text.IsEmpty())
		{
			return false;
		}
		for (const TCHAR Unit : Text)
		{
			if (!FChar::IsDigit(Unit))
			{
				return false;
			}
		}
		return true;
	}

	int32 CountFiles(const FString& Folder)
	{
		int32 Count = 0;
		Files().IterateDirectoryRecursively(*Folder,
											[&Count](const TCHAR*, bool bIsDirectory)
											{
												Count += bIsDirectory ? 0 : 1;
												return true;
											});
		return Count;
	}

	FString Value(const FKeyValues& Item, const TCHAR* Key)
	{
		const FKeyValues* Child = Item.FindChild(Key);
		return Child && !Child->bIsBlock ? Child->Value : FString();
	}

	// The published items and the id counter: "workshop" beside the program, so each kit counts on its own,
	// or the folder TESSEL_STEAMCMD_WORKSHOP names, for copies of one kit that share one Workshop (CI jobs).
	FString WorkshopDir()
	{
		const FString Shared = StandIn::Environment("TESSEL_STEAMCMD_WORKSHOP");
		return Shared.IsEmpty() ? ProgramDir() / TEXT("workshop") : Shared;
	}

	// The next id for a new item; the counter lives beside the program, so each kit counts on its own.
	FString NewPublishedId(const FString& StoreDir)
	{
		const FString CounterPath = StoreDir / TEXT("last_publishedfileid.txt");
		FString Last;
		uint64 Next = FirstPublishedId;
		if (FFileHelper::LoadFileToString(Last, *CounterPath) && IsDigits(Last.TrimStartAndEnd()))
		{
			Next = std::stoull(Last.TrimStartAndEnd().ToUtf8()) + 1;
		}
		const FString Id = FString(std::to_string(Next));
		FFileHelper::SaveStringToFile(Id, *CounterPath);
		return Id;
	}

	struct FLogin
	{
		bool bLoggedIn = false;
		FString User;
	};

	bool Login(const std::vector<std::string>& Args, const FString& Mode, FLogin& OutLogin)
	{
		if (Args.empty())
		{
			Print(TEXT("Missing user name: +login <user> <password> [<Steam Guard code>]"));
			return false;
		}
		const FString User = FString::FromUtf8(Args[0]);
		const bool bHasPassword = Args.size() >= 2 && !Args[1].empty();
		const bool bHasCode = Args.size() >= 3;
		// Typed at the prompt or given, a password that logs in is cached.
		bool bGavePassword = bHasPassword;
		Print(FString::Printf(TEXT("Logging in user '%s' to Steam Public..."), *User));
		if (Mode == TEXT("network"))
		{
			Print(TEXT("FAILED (No Connection)"));
			return false;
		}
		// A login with a password leaves the account's credentials cached on this machine, as SteamCMD does;
		// a later login with the user name alone uses them.
		const FString Cached = ProgramDir() / TEXT("config/loginusers") / User.ToLower();
		if (!bHasPassword && Mode != TEXT("wrong-password") && FPaths::FileExists(Cached))
		{
			Print(TEXT("Logging in using cached credentials."));
		}
		else if (!bHasPassword)
		{
			// SteamCMD would ask; nobody types into a child of the tool.
			std::fputs("password: ", stdout);
			std::fflush(stdout);
			std::string Typed;
			if (!std::getline(std::cin, Typed) || Typed.empty())
			{
				Print(TEXT("FAILED (Invalid Password)"));
				return false;
			}
			bGavePassword = true;
		}
		if (Mode == TEXT("wrong-password") || (bHasCode && Mode != TEXT("steam-guard")))
		{
			Print(TEXT("FAILED (Invalid Password)"));
			return false;
		}
		if (Mode == TEXT("steam-guard") && !bHasCode)
		{
			Print(TEXT("This computer has not been authenticated for your account using Steam Guard."));
			Print(TEXT("Please check your email for the message from Steam, and enter the Steam Guard"));
			Print(TEXT(" code from that message."));
			std::fputs("Steam Guard code: ", stdout);
			std::fflush(stdout);
			std::string Code;
			if (!std::getline(std::cin, Code) || Code.empty())
			{
				Print(TEXT("FAILED (Account Logon Denied)"));
				return false;
			}
		}
		if (bGavePassword)
		{
			IFileManager::Get().MakeDirectory(*FPaths::GetPath(Cached), true);
			FFileHelper::SaveStringToFile(TEXT("cached\n"), *Cached);
		}
		Print(TEXT("OK"));
		Print(TEXT("Waiting for client config...OK"));
		Print(TEXT("Waiting for user info...OK"));
		OutLogin.bLoggedIn = true;
		OutLogin.User = User;
		return true;
	}

	bool Refuse(const FString& Reason, const TCHAR* Result)
	{
		Print(Reason);
		Print(FString::Printf(TEXT("ERROR! Failed to update workshop item (%s)."), Result));
		return false;
	}

	bool BuildItem(const std::vector<std::string>& Args, const FString& Mode, const FLogin& Login)
	{
		if (!Login.bLoggedIn)
		{
			Print(TEXT("ERROR (Not logged on)"));
			return false;
		}
		if (Args.size() != 1)
		{
			Print(TEXT("Usage: workshop_build_item <item file>"));
			return false;
		}
		const FString ItemPath = LocalPath(FString::FromNative(Args[0]));
		FString Text;
		if (!FFileHelper::LoadFileToString(Text, *ItemPath))
		{
			return Refuse(FString::Printf(TEXT("Can't read the item file \"%s\"."), *ItemPath), TEXT("File Not Found"));
		}
		FKeyValues Root;
		FString ParseError;
		if (!FKeyValuesText::Parse(Text, Root, ParseError))
		{
			return Refuse(FString::Printf(TEXT("The item file doesn't parse: %s."), *ParseError), TEXT("Invalid Parameter"));
		}
		FKeyValues* Item = Root.FindChild(TEXT("workshopitem"));
		if (!Item || !Item->bIsBlock)
		{
			return Refuse(TEXT("The item file has no \"workshopitem\" block."), TEXT("Invalid Parameter"));
		}

		const FString AppId = Value(*Item, TEXT("appid"));
		const FString ContentFolder = LocalPath(Value(*Item, TEXT("contentfolder")));
		const FString PreviewFile = LocalPath(Value(*Item, TEXT("previewfile")));
		const FString Title = Value(*Item, TEXT("title"));
		const FString Description = Value(*Item, TEXT("description"));
		const FString ChangeNote = Value(*Item, TEXT("changenote"));
		const FString Visibility = Value(*Item, TEXT("visibility"));
		FString PublishedId = Value(*Item, TEXT("publishedfileid"));

		if (!IsDigits(AppId))
		{
			return Refuse(TEXT("\"appid\" must be a number."), TEXT("Invalid Parameter"));
		}
		if (!PublishedId.IsEmpty() && !IsDigits(PublishedId))
		{
			return Refuse(TEXT("\"publishedfileid\" must be a number."), TEXT("Invalid Parameter"));
		}
		if (!Visibility.IsEmpty() && Visibility != TEXT("0") && Visibility != TEXT("1") && Visibility != TEXT("2") && Visibility != TEXT("3"))
		{
			return Refuse(TEXT("\"visibility\" must be 0, 1, 2 or 3."), TEXT("Invalid Parameter"));
		}
		if (ContentFolder.IsEmpty() || !Files().DirectoryExists(*ContentFolder))
		{
			return Refuse(FString::Printf(TEXT("Content folder \"%s\" doesn't exist."), *ContentFolder), TEXT("File Not Found"));
		}
		const int32 ContentFiles = CountFiles(ContentFolder);
		if (ContentFiles == 0)
		{
			return Refuse(FString::Printf(TEXT("Content folder \"%s\" is empty."), *ContentFolder), TEXT("Invalid Parameter"));
		}
		if (PreviewFile.IsEmpty() || !Files().FileExists(*PreviewFile))
		{
			return Refuse(FString::Printf(TEXT("Preview file \"%s\" doesn't exist."), *PreviewFile), TEXT("File Not Found"));
		}
		const int64 PreviewBytes = Files().FileSize(*PreviewFile);
		if (PreviewBytes > MaxPreviewBytes)
		{
			return Refuse(TEXT("The preview file is larger than 1 MB."), TEXT("Limit Exceeded"));
		}
		if (Title.Len() > MaxTitleLength)
		{
			return Refuse(TEXT("The title is longer than 128 characters."), TEXT("Limit Exceeded"));
		}
		if (Description.Len() > MaxTextLength || ChangeNote.Len() > MaxTextLength)
		{
			return Refuse(TEXT("The description or the change note is longer than 8000 characters."), TEXT("Limit Exceeded"));
		}

		const FString StoreDir = WorkshopDir();
		const bool bNewItem = PublishedId.IsEmpty() || PublishedId == TEXT("0");
		if (!bNewItem)
		{
			FKeyValues Stored;
			FString StoredText;
			FString StoredError;
			const FString StoredPath = StoreDir / AppId / (PublishedId + TEXT(".vdf"));
			const FKeyValues* StoredItem = nullptr;
			if (FFileHelper::LoadFileToString(StoredText, *StoredPath) && FKeyValuesText::Parse(StoredText, Stored, StoredError))
			{
				StoredItem = Stored.FindChild(TEXT("workshopitem"));
			}
			if (!StoredItem || !Value(*StoredItem, TEXT("owner")).Equals(Login.User, ESearchCase::IgnoreCase))
			{
				return Refuse(FString::Printf(TEXT("Item %s isn't one of this account's items."), *PublishedId), TEXT("Access Denied"));
			}
		}

		Print(bNewItem ? TEXT("Creating new workshop item...") : FString::Printf(TEXT("Updating workshop item %s..."), *PublishedId));
		Print(FString::Printf(TEXT("Preparing content (%d files)..."), ContentFiles));
		Print(TEXT("Uploading content..."));
		if (Mode == TEXT("crash"))
		{
			StandIn::Crash();
		}
		if (Mode == TEXT("hang"))
		{
			StandIn::HangForever();
		}
		Print(TEXT("Uploading preview image..."));
		Print(TEXT("Committing changes..."));

		if (bNewItem)
		{
			PublishedId = NewPublishedId(StoreDir);
		}

		// What arrived, as the Workshop keeps it: the texts, and no local paths.
		FKeyValues Record;
		Record.bIsBlock = true;
		FKeyValues Published;
		Published.Key = TEXT("workshopitem");
		Published.bIsBlock = true;
		auto Add = [&Published](const TCHAR* Key, const FString& Text)
		{
			FKeyValues Pair;
			Pair.Key = Key;
			Pair.Value = Text;
			Published.Children.push_back(Pair);
		};
		Add(TEXT("appid"), AppId);
		Add(TEXT("publishedfileid"), PublishedId);
		Add(TEXT("owner"), Login.User);
		Add(TEXT("title"), Title);
		Add(TEXT("description"), Description);
		Add(TEXT("changenote"), ChangeNote);
		Add(TEXT("visibility"), Visibility.IsEmpty() ? FString(TEXT("0")) : Visibility);
		Add(TEXT("contentfiles"), FString::FromInt(ContentFiles));
		Add(TEXT("previewbytes"), FString(std::to_string(PreviewBytes)));
		Record.Children.push_back(Published);
		Files().CreateDirectoryTree(*(StoreDir / AppId));
		FFileHelper::SaveStringToFile(FKeyValuesText::Write(Record), *(StoreDir / AppId / (PublishedId + TEXT(".vdf"))));

		if (Mode != TEXT("no-id"))
		{
			// The id goes into the item file, right after the app id when the file had none, so that a later
			// upload of the same file updates the item.
			const FString WrittenId = Mode == TEXT("letters-id") ? PublishedId.Left(4) + TEXT("abc") + PublishedId.RightChop(4) : PublishedId;
			if (FKeyValues* Existing = Item->FindChild(TEXT("publishedfileid")))
			{
				Existing->Value = WrittenId;
			}
			else
			{
				FKeyValues Pair;
				Pair.Key = TEXT("publishedfileid");
				Pair.Value = WrittenId;
				auto Where = Item->Children.begin();
				for (auto It = Item->Children.begin(); It != Item->Children.end(); ++It)
				{
					if (It->Key.Equals(TEXT("appid"), ESearchCase::IgnoreCase))
					{
						Where = It + 1;
						break;
					}
				}
				Item->Children.insert(Where, Pair);
			}
			FFileHelper::SaveStringToFile(FKeyValuesText::Write(Root), *ItemPath);
		}
		Print(FString::Printf(TEXT("Success. Published file id %s."), *PublishedId));
		return true;
	}
}

static int SteamCmdMain(int ArgC, char** ArgV)
{
	const FString Mode = ReadMode();
	Print(TEXT("Redirecting stderr to 'logs/stderr.txt'"));
	Print(TEXT("Loading Steam API...OK"));

	// Commands and their arguments: everything up to the next "+" word.
	std::vector<std::pair<std::string, std::vector<std::string>>> Commands;
	for (int Index = 1; Index < ArgC; ++Index)
	{
		const std::string Arg = ArgV[Index];
		if (!Arg.empty() && Arg[0] == '+')
		{
			Commands.push_back({Arg.substr(1), {}});
		}
		else if (!Commands.empty())
		{
			Commands.back().second.push_back(Arg);
		}
		else
		{
			Print(FString::Printf(TEXT("Unexpected argument before any command (argument %d)."), Index));
			return 1;
		}
	}

	FLogin Session;
	int ExitCode = 0;
	for (const auto& [Name, Args] : Commands)
	{
		if (Name == "login")
		{
			if (!Login(Args, Mode, Session))
			{
				ExitCode = 5;
			}
		}
		else if (Name == "workshop_build_item")
		{
			if (!BuildItem(Args, Mode, Session))
			{
				ExitCode = 8;
			}
		}
		else if (Name == "quit")
		{
			break;
		}
		else
		{
			// Not echoed: a password that begins with "+" would stand here.
			Print(TEXT("Unknown command."));
		}
	}
	Print(TEXT("Unloading Steam API...OK"));
	return ExitCode;
}

TESSEL_STAND_IN_MAIN(SteamCmdMain)
