#pragma once

#include "json/JsonReader.h"
#include "json/JsonWriter.h"

// Builds documents from a reader and writes them through a writer, both without recursion, so that a
// document's depth is bounded by memory and not by the call stack.
struct JsonSerializer
{
	// True, with OutObject set, when the text is one well-formed document whose root is an object; else
	// false with OutObject unchanged.
	static bool Deserialize(const TSharedRef<JsonReader>& Reader, TSharedPtr<FJsonObject>& OutObject);
	// Writes the document; the result is the writer's Close.
	static bool Serialize(const TSharedRef<FJsonObject>& Object, const TSharedRef<JsonWriter>& Writer);
};
