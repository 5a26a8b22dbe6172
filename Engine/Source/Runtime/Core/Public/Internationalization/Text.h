#pragma once

#include "Containers/UnrealString.h"

// A text that a user sees: its source string with the namespace and key under which it is localised.
class CORE_API FText
{
public:
	FText() = default;
	FText(FString InNamespace, FString InKey, FString InSource)
		: Namespace(std::move(InNamespace)), Key(std::move(InKey)), Source(std::move(InSource))
	{
	}

	// A text made from data, with no key: nothing to localise.
	static FText FromString(FString Source) { return FText(FString(), FString(), std::move(Source)); }
	static FText GetEmpty() { return FText(); }

	const FString& ToString() const { return Source; }
	const FString& GetKey() const { return Key; }
	const FString& GetNamespace() const { return Namespace; }
	bool IsEmpty() const { return Source.IsEmpty(); }
	bool IdenticalTo(const FText& Other) const
	{
		return Namespace == Other.Namespace && Key == Other.Key && Source == Other.Source;
	}

private:
	FString Namespace;
	FString Key;
	FString Source;
};

#define LOCTEXT(InKey, InTextLiteral) FText(TEXT(LOCTEXT_NAMESPACE), TEXT(InKey), TEXT(InTextLiteral))
#define NSLOCTEXT(InNamespace, InKey, InTextLiteral) FText(TEXT(InNamespace), TEXT(InKey), TEXT(InTextLiteral))
