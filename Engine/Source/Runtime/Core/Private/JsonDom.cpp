#include "Dom/JsonObject.h"

#include <charconv>
#include <vector>

namespace
{
	const TArray<TSharedPtr<FJsonValue>>& EmptyArray()
	{
		static const TArray<TSharedPtr<FJsonValue>> Empty;
		return Empty;
	}
}

// Releases nested values one level at a time from a work list. A document can nest a million levels deep;
// letting each value's destructor release its children would need a stack frame per level.
struct FJsonRelease
{
	static void Release(std::vector<std::shared_ptr<FJsonValue>> Values, std::vector<std::shared_ptr<FJsonObject>> Objects)
	{
		while (!Values.empty() || !Objects.empty())
		{
			if (!Objects.empty())
			{
				std::shared_ptr<FJsonObject> Object = std::move(Objects.back());
				Objects.pop_back();
				if (Object && Object.use_count() == 1)
				{
					for (auto& Pair : Object->Values)
					{
						Values.push_back(std::move(Pair.Value));
					}
					Object->Values.Empty();
				}
				continue; // the object goes here, with nothing left below it
			}
			std::shared_ptr<FJsonValue> Value = std::move(Values.back());
			Values.pop_back();
			if (!Value || Value.use_count() != 1)
			{
				continue;
			}
			if (auto* Array = dynamic_cast<FJsonValueArray*>(Value.get()))
			{
				for (TSharedPtr<FJsonValue>& Child : Array->Value)
				{
					Values.push_back(std::move(Child));
				}
				Array->Value.Empty();
			}
			else if (auto* ObjectValue = dynamic_cast<FJsonValueObject*>(Value.get()))
			{
				Objects.push_back(std::move(ObjectValue->Value));
			}
		}
	}
};

FJsonValueArray::~FJsonValueArray()
{
	std::vector<std::shared_ptr<FJsonValue>> Children;
	Children.reserve(static_cast<size_t>(Value.Num()));
	for (TSharedPtr<FJsonValue>& Child : Value)
	{
		Children.push_back(std::move(Child));
	}
	FJsonRelease::Release(std::move(Children), {});
}

FJsonValueObject::~FJsonValueObject()
{
	std::vector<std::shared_ptr<FJsonObject>> Objects;
	Objects.push_back(std::move(Value));
	FJsonRelease::Release({}, std::move(Objects));
}

const TArray<TSharedPtr<FJsonValue>>& FJsonValue::AsArray() const
{
	return EmptyArray();
}

const TSharedPtr<FJsonObject>& FJsonValue::AsObject() const
{
	static const TSharedPtr<FJsonObject> Null;
	return Null;
}

bool FJsonValue::TryGetString(FString& OutString) const
{
	if (Type != EJson::String && Type != EJson::Number && Type != EJson::Boolean)
	{
		return false;
	}
	OutString = AsString();
	return true;
}

double FJsonValueString::AsNumber() const
{
	const std::string Text = Value.ToUtf8();
	double Result = 0.0;
	const auto [End, Error] = std::from_chars(Text.data(), Text.data() + Text.size(), Result);
	return (Error == std::errc() && End == Text.data() + Text.size()) ? Result : 0.0;
}

FString FJsonValueNumber::AsString() const
{
	char Buffer[64];
	const auto [End, Error] = std::to_chars(Buffer, Buffer + sizeof(Buffer), Value);
	return Error == std::errc() ? FString(std::string(Buffer, End)) : FString();
}

void FJsonObject::SetStringField(const FString& FieldName, const FString& Value)
{
	SetField(FieldName, MakeShared<FJsonValueString>(Value));
}

void FJsonObject::SetNumberField(const FString& FieldName, double Value)
{
	SetField(FieldName, MakeShared<FJsonValueNumber>(Value));
}

void FJsonObject::SetBoolField(const FString& FieldName, bool bValue)
{
	SetField(FieldName, MakeShared<FJsonValueBoolean>(bValue));
}

void FJsonObject::SetArrayField(const FString& FieldName, const TArray<TSharedPtr<FJsonValue>>& Array)
{
	SetField(FieldName, MakeShared<FJsonValueArray>(Array));
}

void FJsonObject::SetObjectField(const FString& FieldName, const TSharedPtr<FJsonObject>& Object)
{
	SetField(FieldName, MakeShared<FJsonValueObject>(Object));
}

FString FJsonObject::GetStringField(const FString& FieldName) const
{
	const TSharedPtr<FJsonValue> Value = GetField(FieldName);
	return Value ? Value->AsString() : FString();
}

bool FJsonObject::TryGetStringField(const FString& FieldName, FString& OutString) const
{
	const TSharedPtr<FJsonValue> Value = GetField(FieldName);
	return Value && Value->TryGetString(OutString);
}

double FJsonObject::GetNumberField(const FString& FieldName) const
{
	const TSharedPtr<FJsonValue> Value = GetField(FieldName);
	return Value ? Value->AsNumber() : 0.0;
}

bool FJsonObject::GetBoolField(const FString& FieldName) const
{
	const TSharedPtr<FJsonValue> Value = GetField(FieldName);
	return Value && Value->AsBool();
}

const TArray<TSharedPtr<FJsonValue>>& FJsonObject::GetArrayField(const FString& FieldName) const
{
	const TSharedPtr<FJsonValue>* Value = Values.Find(FieldName);
	return (Value && *Value) ? (*Value)->AsArray() : EmptyArray();
}

bool FJsonObject::TryGetArrayField(const FString& FieldName, const TArray<TSharedPtr<FJsonValue>>*& OutArray) const
{
	const TSharedPtr<FJsonValue>* Value = Values.Find(FieldName);
	if (!Value || !*Value || (*Value)->Type != EJson::Array)
	{
		return false;
	}
	OutArray = &(*Value)->AsArray();
	return true;
}

TSharedPtr<FJsonObject> FJsonObject::GetObjectField(const FString& FieldName) const
{
	const TSharedPtr<FJsonValue> Value = GetField(FieldName);
	return Value ? Value->AsObject() : nullptr;
}
