#pragma once

#include "json/JsonReader.h"
#include "json/JsonWriter.h"

#include <functional>

// Builds documents from a reader and writes them through a writer, both without recursion, so that a
// document's depth is bounded by memory and not by the call stack.
struct JsonSerializer
{
	// True, with OutObject set, when the text is one well-formed document whose root is an object; else
	// false with OutObject unchanged.
	static bool Deserialize(const TSharedRef<JsonReader>& Reader, TSharedPtr<FJsonObject>& OutObject);

	// One array member of the root object handed over an element at a time, as each is read, instead of
	// kept in the document, so that a large array never stands whole in memory. OnMemberStart is called
	// each time a root member named Member begins, whatever its value: a later one replaces the earlier in
	// the document, so what was handed over before is void. OnElement gets each element of it when it is an
	// array. The document keeps the member as an empty array. What was handed over counts only when
	// Deserialize returns true.
	struct FArrayMemberStream
	{
		FString Member;
		std::function<void()> OnMemberStart;
		std::function<void(const TSharedPtr<FJsonValue>&)> OnElement;
	};
	static bool Deserialize(const TSharedRef<JsonReader>& Reader, TSharedPtr<FJsonObject>& OutObject, const FArrayMemberStream& Stream);

	// Writes the document; the result is the writer's Close.
	static bool Serialize(const TSharedRef<FJsonObject>& Object, const TSharedRef<JsonWriter>& Writer);
	// Writes one value where the writer stands, named when Identifier isn't empty, and leaves the writer open:
	// a large document can then be written a piece at a time, in the same layout as written whole.
	static void SerializeValue(const TSharedPtr<FJsonValue>& Value, const FString& Identifier, JsonWriter& Writer);
};
