#pragma once

#include "CoreMinimal.h"

#include <cstdio>

// True when Stream is a terminal (or console) rather than a file or a pipe.
bool IsTerminal(std::FILE* Stream);

// Asks on the terminal: the prompt goes to stderr and the answer is read from standard input, without echo
// when bSecret. False when standard input is no terminal or ends before a line.
bool PromptOnTerminal(const FString& Prompt, bool bSecret, FString& OutAnswer);
// Reads Name from our environment and removes it there, so that no program we start inherits it; empty when
// unset. For a secret such as STEAM_PASSWORD, which the environment would otherwise hand to every child.
FString TakeFromEnvironment(const char* Name);

// Reads one line of standard input as the answer, without its line end; false when input ended first.
bool ReadAnswerLine(FString& OutAnswer);
