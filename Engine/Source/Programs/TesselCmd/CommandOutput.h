#pragma once

#include "CoreMinimal.h"
#include "Dom/JsonObject.h"
#include "Dom/JsonValue.h"

#include <functional>
#include <string>

// The exit codes of every command.
enum class EExitCode : int
{
	Success = 0,
	// The job itself failed: a cook without "Success", an upload that didn't publish, a check that failed.
	JobFailed = 1,
	// A usage error or bad input: an unknown mod, a folder that is no kit, a broken file.
	BadInput = 2,
};

// A failure that ends the command: one line on stderr that names the file or the value and what is wrong.
struct FCommandError
{
	EExitCode Code;
	FString Message;
};

// Where a command's results go: lines for people on stdout, or with --json one JSON document on stdout and
// everything else (log lines, a child's own output) on stderr.
class FCommandOutput
{
public:
	explicit FCommandOutput(bool bInJson) : bJson(bInJson) {}

	bool IsJson() const { return bJson; }
	// A line of the text result; left out with --json.
	void Line(const FString& Text) const;
	// A line that is part of the run's story (a log line): stdout for people, stderr with --json.
	void Progress(const FString& Text) const;
	// A line on stderr in both modes.
	static void Note(const FString& Text);
	// Prints the document as the run's one result on stdout.
	static void Print(const TSharedRef<FJsonObject>& Document);
	// Prints the document that Write writes, as Print prints it, a block at a time as it is written: for a
	// document too large to build whole.
	static void PrintWritten(const std::function<void(class JsonWriter&)>& Write);
	// The document as UTF-8 JSON text, indented with tabs, lines ended by a line feed.
	static std::string ToJsonText(const TSharedRef<FJsonObject>& Document);

private:
	bool bJson;
};

// Small builders for the documents.
TSharedPtr<FJsonValue> JsonString(const FString& Value);
TSharedPtr<FJsonValue> JsonNumber(double Value);
TSharedPtr<FJsonValue> JsonObject(const TSharedPtr<FJsonObject>& Object);
TArray<TSharedPtr<FJsonValue>> JsonStrings(const TArray<FString>& Values);

// Writes text as UTF-8 to a C stream with a line feed.
void PrintLine(FILE* Stream, const FString& Text);
