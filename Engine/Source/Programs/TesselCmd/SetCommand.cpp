#include "CommandOutput.h"
#include "Commands.h"
#include "HAL/FileManager.h"
#include "KitSession.h"
#include "Misc/FileHelper.h"
#include "ModRecordText.h"
#include "catalogue/ModFields.h"
#include "json/JsonSerializer.h"

namespace
{
	FString NormalizeFieldName(const FString& Name)
	{
		FString Result;
		for (const TCHAR Unit : Name)
		{
			if (Unit != u'-' && Unit != u'_')
			{
				Result += FChar::ToLower(Unit);
			}
		}
		return Result;
	}

	FString OneOf(const TArray<FString>& Labels)
	{
		TArray<FString> Quoted;
		for (const FString& Label : Labels)
		{
			Quoted.Add(TEXT("\"") + Label + TEXT("\""));
		}
		return FString::Join(Quoted, TEXT(", "));
	}

	// The label among Labels that Value names, letter case ignored; throws BadInput otherwise.
	FString MatchLabel(const FString& Value, const TArray<FString>& Labels, const TCHAR* What)
	{
		for (const FString& Label : Labels)
		{
			if (Label.Equals(Value, ESearchCase::IgnoreCase))
			{
				return Label;
			}
		}
		throw FCommandError{EExitCode::BadInput,
							FString::Printf(TEXT("%s \"%s\" is not one of %s"), What, *Value, *OneOf(Labels))};
	}

	FString ReadValue(const FString& Text)
	{
		// "@file" takes the value from a file, for long descriptions and change notes; "@@" is a literal "@".
		if (Text.StartsWith(TEXT("@@"), ESearchCase::CaseSensitive))
		{
			return Text.Mid(1);
		}
		if (!Text.StartsWith(TEXT("@"), ESearchCase::CaseSensitive))
		{
			return Text;
		}
		const FString Path = ToFullPath(Text.Mid(1));
		FString Value;
		if (!FFileHelper::LoadFileToString(Value, *Path))
		{
			throw FCommandError{EExitCode::BadInput, FString::Printf(TEXT("%s: can't be read"), *Path)};
		}
		// A file ends with a line break that is no part of the value, as a shell's $(cat file) drops it.
		if (Value.EndsWith(TEXT("\r\n"), ESearchCase::CaseSensitive))
		{
			Value = Value.LeftChop(2);
		}
		else if (Value.EndsWith(TEXT("\n"), ESearchCase::CaseSensitive))
		{
			Value = Value.LeftChop(1);
		}
		return Value;
	}

	bool IsDecimalDigit(TCHAR Unit)
	{
		return Unit >= u'0' && Unit <= u'9';
	}
	bool IsUpperHexDigit(TCHAR Unit)
	{
		return IsDecimalDigit(Unit) || (Unit >= u'A' && Unit <= u'F');
	}

	bool AllOf(const FString& Value, bool (*Test)(TCHAR))
	{
		for (const TCHAR Unit : Value)
		{
			if (!Test(Unit))
			{
				return false;
			}
		}
		return true;
	}

	bool IsWorkshopId(const FString& Value)
	{
		if (Value.Len() > 20 || Value.StartsWith(TEXT("0")) || !AllOf(Value, IsDecimalDigit))
		{
			return false;
		}
		// Twenty digits may pass 2^64 - 1.
		return Value.Len() < 20 || !(FString(TEXT("18446744073709551615")) < Value);
	}

	FString CleanValue(FString FModSetup::*Member, const FString& Value)
	{
		if (Member == &FModSetup::Visibility)
		{
			return MatchLabel(Value, VisibilityLabels(), TEXT("visibility"));
		}
		if (Member == &FModSetup::Tags)
		{
			// Stored as the check boxes store them: labels joined by "," in the order given, each once.
			TArray<FString> Pieces;
			Value.ParseIntoArray(Pieces, TEXT(","), true);
			TArray<FString> Tags;
			for (const FString& Piece : Pieces)
			{
				const FString Trimmed = Piece.TrimStartAndEnd();
				if (Trimmed.IsEmpty())
				{
					continue;
				}
				const FString Tag = MatchLabel(Trimmed, TagLabels(), TEXT("tag"));
				if (!Tags.Contains(Tag))
				{
					Tags.Add(Tag);
				}
			}
			return FString::Join(Tags, TEXT(","));
		}
		if (Member == &FModSetup::PreviewImage && !Value.IsEmpty())
		{
			// A relative path is found from the working folder, else from the kit's folder, so that a script
			// can name a picture kept in the kit wherever the kit was checked out.
			const FString Path = ToFullPath(Value);
			if (IFileManager::Get().FileExists(*Path))
			{
				return Path;
			}
			const FString InKit = FPaths::ConvertRelativePathToFull(FPaths::RootDir(), Value);
			if (FPaths::IsRelative(Value) && IFileManager::Get().FileExists(*InKit))
			{
				return InKit;
			}
			throw FCommandError{EExitCode::BadInput, FPaths::IsRelative(Value)
														 ? FString::Printf(TEXT("%s: no such preview image (nor %s)"), *Path, *InKit)
														 : FString::Printf(TEXT("%s: no such preview image"), *Path)};
		}
		if (Member == &FModSetup::ItemSeamId && !Value.IsEmpty() && !IsWorkshopId(Value))
		{
			throw FCommandError{
				EExitCode::BadInput,
				FString::Printf(TEXT("published id \"%s\" is not a Workshop id (a number from 1 to 18446744073709551615)"), *Value)};
		}
		if (Member == &FModSetup::GUID && !Value.IsEmpty())
		{
			// As the cook writes it: 32 hexadecimal digits, upper case, no separators.
			const FString Upper = Value.ToUpper();
			if (Upper.Len() != 32 || !AllOf(Upper, IsUpperHexDigit))
			{
				throw FCommandError{EExitCode::BadInput, FString::Printf(TEXT("GUID \"%s\" is not 32 hexadecimal digits"), *Value)};
			}
			return Upper;
		}
		return Value;
	}
}

namespace
{
	// The record of ModDir as the tool would read it from the file, made alone: the other records of a large
	// file are passed over, not kept. Null when the file doesn't read or has no such record.
	TSharedPtr<FModSetup> ReadSavedRecord(const FString& Path, const FString& ModDir)
	{
		TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path, 0));
		if (!Reader)
		{
			return nullptr;
		}
		TSharedPtr<FModSetup> Found;
		JsonSerializer::FArrayMemberStream Stream;
		Stream.Member = TEXT("Mods");
		Stream.OnMemberStart = [&] { Found.Reset(); };
		Stream.OnElement = [&](const TSharedPtr<FJsonValue>& Element)
		{
			const TSharedPtr<FJsonObject> Object = Element ? Element->AsObject() : nullptr;
			if (!Found && Object && Object->GetStringField(TEXT("ModDir")) == ModDir)
			{
				Found = MakeShared<FModSetup>(Element);
			}
		};
		TSharedPtr<FJsonObject> Root;
		const bool bRead = JsonSerializer::Deserialize(MakeShared<JsonReader>(Reader.get()), Root, Stream);
		Reader->Close();
		return bRead ? Found : nullptr;
	}
}

int RunSet(const FGlobalOptions& Options, const FString& ModName, const TArray<FString>& Assignments)
{
	LocateKit(Options.Kit);
	const FDatabaseGuard Guard;
	FTesselSession Session;
	RequireReadableDatabase(Session);
	// The one save is the explicit one below; whatever fails before it, the file stays as it was.

	const TSharedPtr<FModSetup> Mod = SelectMod(Session, ModName);

	// Every assignment is checked before any is made.
	FModSetup Edited = *Mod;
	for (const FString& Assignment : Assignments)
	{
		FString Name;
		FString Text;
		if (!Assignment.Split(TEXT("="), &Name, &Text))
		{
			throw FCommandError{EExitCode::BadInput, FString::Printf(TEXT("\"%s\": expected <field>=<value>"), *Assignment)};
		}
		// The fields a user may set, by the names the field table gives them; letter case, "-" and "_" are
		// ignored, so "change-notes", "ChangeNotes" and "change_notes" name the same field.
		const FString Key = NormalizeFieldName(Name);
		const FModField* Field = nullptr;
		TArray<FString> Settable;
		for (const FModField& Candidate : ModFields)
		{
			for (const TCHAR* SetName : Candidate.SetNames)
			{
				if (SetName && NormalizeFieldName(SetName) == Key)
				{
					Field = &Candidate;
				}
			}
			if (Candidate.SetNames[0])
			{
				Settable.Add(Candidate.SetNames[0]);
			}
		}
		if (!Field)
		{
			throw FCommandError{EExitCode::BadInput,
								FString::Printf(TEXT("unknown field \"%s\": set %s or %s"), *Name,
												*FString::Join(TArray<FString>(Settable.GetData(), Settable.Num() - 1), TEXT(", ")),
												*Settable.Last())};
		}
		Edited.*(Field->Member) = CleanValue(Field->Member, ReadValue(Text));
	}

	*Mod = Edited;
	const FString Path = KitPaths::ModDatabase();
	Guard.Save(
		[&](bool bChanged)
		{
			// Saving the records read earlier would undo what the other save wrote.
			if (bChanged)
			{
				throw FCommandError{EExitCode::JobFailed,
									FString::Printf(TEXT("%s: changed since this run read it (another run or the window saved it); "
														 "nothing saved: run the command again"),
													*Path)};
			}
			Session.Save();
		});

	// The tool's save reports nothing, so the file is read back to be sure the edit arrived.
	const TSharedPtr<FModSetup> Found = ReadSavedRecord(Path, Edited.ModDir);
	const FCommandOutput Output(Options.bJson);
	if (!Found || FCommandOutput::ToJsonText(Found->ToJsonValue()->AsObject().ToSharedRef()) !=
					  FCommandOutput::ToJsonText(Edited.ToJsonValue()->AsObject().ToSharedRef()))
	{
		throw FCommandError{EExitCode::JobFailed, FString::Printf(TEXT("%s: the edit could not be saved"), *Path)};
	}

	if (Output.IsJson())
	{
		TSharedRef<FJsonObject> Document = MakeShared<FJsonObject>();
		Document->SetStringField(TEXT("database"), Path);
		Document->SetField(TEXT("mod"), Edited.ToJsonValue());
		FCommandOutput::Print(Document);
	}
	else
	{
		Output.Line(FString::Printf(TEXT("Saved %s"), *Path));
		for (const FString& Line : DescribeModRecord(Edited))
		{
			Output.Line(Line);
		}
	}
	return static_cast<int>(EExitCode::Success);
}
