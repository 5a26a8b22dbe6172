#pragma once

#include "Containers/Map.h"
#include "Dom/JsonValue.h"

// A JSON object: named values in the order of their first insertion. Member names are compared exactly.
// Getters of absent members give empty results and never fail.
class CORE_API FJsonObject
{
public:
	TMap<FString, TSharedPtr<FJsonValue>> Values;

	// Stores a member; a name that is there already keeps its place and takes the new value.
	void SetField(const FString& FieldName, const TSharedPtr<FJsonValue>& Value) { Values.Add(FieldName, Value); }
	void SetStringField(const FString& FieldName, const FString& Value);
	void SetNumberField(const FString& FieldName, double Value);
	void SetBoolField(const FString& FieldName, bool bValue);
	void SetArrayField(const FString& FieldName, const TArray<TSharedPtr<FJsonValue>>& Array);
	void SetObjectField(const FString& FieldName, const TSharedPtr<FJsonObject>& Object);
	void RemoveField(const FString& FieldName) { Values.Remove(FieldName); }

	TSharedPtr<FJsonValue> GetField(const FString& FieldName) const { return Values.FindRef(FieldName); }
	bool HasField(const FString& FieldName) const { return Values.Contains(FieldName); }

	// The member's text by the rules of FJsonValue::AsString; empty when it is absent.
	FString GetStringField(const FString& FieldName) const;
	// True when the member is a string, a number or a boolean; OutString is left alone otherwise.
	bool TryGetStringField(const FString& FieldName, FString& OutString) const;
	double GetNumberField(const FString& FieldName) const;
	bool GetBoolField(const FString& FieldName) const;
	// The member's elements; an empty array when it is absent or no array.
	const TArray<TSharedPtr<FJsonValue>>& GetArrayField(const FString& FieldName) const;
	bool TryGetArrayField(const FString& FieldName, const TArray<TSharedPtr<FJsonValue>>*& OutArray) const;
	// The member's object; null when it is absent or no object.
	TSharedPtr<FJsonObject> GetObjectField(const FString& FieldName) const;
};
