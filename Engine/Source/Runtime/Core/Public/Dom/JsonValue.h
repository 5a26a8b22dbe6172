#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"
#include "Templates/SharedPointer.h"

// The kind of a JSON value or scope.
enum class EJson : int32
{
	None = 0,
	Null = 1,
	String = 2,
	Number = 3,
	Boolean = 4,
	Array = 5,
	Object = 6,
};

class FJsonObject;

// One value of a JSON document. The accessors never fail: a value of another kind converts where that is
// natural and gives an empty result where it is not.
//   AsString: a string as it is; a number in its shortest exact decimal form; a boolean as "true"/"false";
//             null, array and object as the empty string.
//   AsNumber: a number; a string that is wholly a decimal number, else 0; a boolean as 1 or 0; else 0.
//   AsBool:   a boolean; a number that is not 0; a string equal to "true" in any letter case; else false.
//   AsArray:  an array's elements; an empty array for anything else.
//   AsObject: an object's members; null for anything else.
class CORE_API FJsonValue
{
public:
	EJson Type = EJson::None;

	virtual ~FJsonValue() = default;

	virtual FString AsString() const { return FString(); }
	virtual double AsNumber() const { return 0.0; }
	virtual bool AsBool() const { return false; }
	virtual const TArray<TSharedPtr<FJsonValue>>& AsArray() const;
	virtual const TSharedPtr<FJsonObject>& AsObject() const;

	// True for a string, a number or a boolean, whose text is then given in OutString.
	bool TryGetString(FString& OutString) const;
	bool IsNull() const { return Type == EJson::Null || Type == EJson::None; }

protected:
	explicit FJsonValue(EJson InType) : Type(InType) {}
};

class CORE_API FJsonValueString : public FJsonValue
{
public:
	explicit FJsonValueString(FString InValue) : FJsonValue(EJson::String), Value(std::move(InValue)) {}
	FString AsString() const override { return Value; }
	double AsNumber() const override;
	bool AsBool() const override { return Value.Equals(TEXT("true"), ESearchCase::IgnoreCase); }

private:
	FString Value;
};

class CORE_API FJsonValueNumber : public FJsonValue
{
public:
	explicit FJsonValueNumber(double InValue) : FJsonValue(EJson::Number), Value(InValue) {}
	FString AsString() const override;
	double AsNumber() const override { return Value; }
	bool AsBool() const override { return Value != 0.0; }

private:
	double Value;
};

class CORE_API FJsonValueBoolean : public FJsonValue
{
public:
	explicit FJsonValueBoolean(bool bInValue) : FJsonValue(EJson::Boolean), bValue(bInValue) {}
	FString AsString() const override { return bValue ? FString(TEXT("true")) : FString(TEXT("false")); }
	double AsNumber() const override { return bValue ? 1.0 : 0.0; }
	bool AsBool() const override { return bValue; }

private:
	bool bValue;
};

class CORE_API FJsonValueArray : public FJsonValue
{
public:
	explicit FJsonValueArray(TArray<TSharedPtr<FJsonValue>> InValue) : FJsonValue(EJson::Array), Value(std::move(InValue))
	{
	}
	~FJsonValueArray() override;
	const TArray<TSharedPtr<FJsonValue>>& AsArray() const override { return Value; }

private:
	friend struct FJsonRelease;
	TArray<TSharedPtr<FJsonValue>> Value;
};

class CORE_API FJsonValueObject : public FJsonValue
{
public:
	explicit FJsonValueObject(TSharedPtr<FJsonObject> InValue) : FJsonValue(EJson::Object), Value(std::move(InValue)) {}
	~FJsonValueObject() override;
	const TSharedPtr<FJsonObject>& AsObject() const override { return Value; }

private:
	friend struct FJsonRelease;
	TSharedPtr<FJsonObject> Value;
};

class CORE_API FJsonValueNull : public FJsonValue
{
public:
	FJsonValueNull() : FJsonValue(EJson::Null) {}
};
