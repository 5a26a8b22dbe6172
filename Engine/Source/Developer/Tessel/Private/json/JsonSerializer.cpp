#include "json/JsonSerializer.h"

#include <cstdio>

namespace
{
	struct JsonScope
	{
		EJson Type = EJson::None;
		FString Identifier;
		TArray<TSharedPtr<FJsonValue>> Array;
		TSharedPtr<FJsonObject> Object;
		// The elements of this array go to the stream instead of into it.
		bool bStreamed = false;
	};

	struct JsonElement
	{
		FString Identifier;
		TSharedPtr<FJsonValue> Value;
		bool bProcessed = false;
	};
}

bool JsonSerializer::Deserialize(const TSharedRef<JsonReader>& Reader, TSharedPtr<FJsonObject>& OutObject)
{
	return Deserialize(Reader, OutObject, FArrayMemberStream());
}

bool JsonSerializer::Deserialize(const TSharedRef<JsonReader>& Reader, TSharedPtr<FJsonObject>& OutObject, const FArrayMemberStream& Stream)
{
	TArray<TSharedPtr<JsonScope>> ScopeStack;
	TSharedPtr<JsonScope> CurrentScope;
	EJsonNotation Notation;

	if (!Reader->ReadNext(Notation))
	{
		return false;
	}
	do
	{
		FString Identifier = Reader->GetIdentifier();
		TSharedPtr<FJsonValue> NewValue;
		const bool bStreamedMember = !Stream.Member.IsEmpty() && CurrentScope && ScopeStack.Num() == 0 &&
									 CurrentScope->Type == EJson::Object && Notation != EJsonNotation::ObjectEnd &&
									 Notation != EJsonNotation::ArrayEnd && Notation != EJsonNotation::Error && Identifier == Stream.Member;
		if (bStreamedMember && Stream.OnMemberStart)
		{
			Stream.OnMemberStart();
		}
		switch (Notation)
		{
		case EJsonNotation::ObjectStart:
		case EJsonNotation::ArrayStart:
			if (CurrentScope)
			{
				ScopeStack.Add(CurrentScope);
			}
			CurrentScope = MakeShared<JsonScope>();
			CurrentScope->Type = Notation == EJsonNotation::ObjectStart ? EJson::Object : EJson::Array;
			CurrentScope->Identifier = Identifier;
			CurrentScope->bStreamed = bStreamedMember && Notation == EJsonNotation::ArrayStart;
			if (Notation == EJsonNotation::ObjectStart)
			{
				CurrentScope->Object = MakeShared<FJsonObject>();
			}
			break;
		case EJsonNotation::ObjectEnd:
		case EJsonNotation::ArrayEnd:
			// The root scope stays current, so that its object is there when the text ends.
			if (ScopeStack.Num() > 0)
			{
				// A "}" that closes an array leaves a scope without object; its value then has none either.
				if (Notation == EJsonNotation::ObjectEnd)
				{
					NewValue = MakeShared<FJsonValueObject>(CurrentScope->Object);
				}
				else
				{
					NewValue = MakeShared<FJsonValueArray>(std::move(CurrentScope->Array));
				}
				Identifier = CurrentScope->Identifier;
				CurrentScope = ScopeStack.Pop();
			}
			break;
		case EJsonNotation::Boolean:
			NewValue = MakeShared<FJsonValueBoolean>(Reader->GetValueAsBoolean());
			break;
		case EJsonNotation::String:
			NewValue = MakeShared<FJsonValueString>(Reader->GetValueAsString());
			break;
		case EJsonNotation::Number:
			NewValue = MakeShared<FJsonValueNumber>(Reader->GetValueAsNumber());
			break;
		case EJsonNotation::Null:
			NewValue = MakeShared<FJsonValueNull>();
			break;
		case EJsonNotation::Error:
			return false;
		}

		if (NewValue && CurrentScope)
		{
			if (CurrentScope->Type == EJson::Object)
			{
				// An object scope made by a "{" always has its object; one left by a "]" in an object has one too.
				if (CurrentScope->Object)
				{
					CurrentScope->Object->SetField(Identifier, NewValue);
				}
			}
			else if (CurrentScope->bStreamed)
			{
				if (Stream.OnElement)
				{
					Stream.OnElement(NewValue);
				}
			}
			else
			{
				CurrentScope->Array.Add(NewValue);
			}
		}
	} while (Reader->ReadNext(Notation));

	if (!CurrentScope || !Reader->GetErrorMessage().IsEmpty())
	{
		return false;
	}
	if (!CurrentScope->Object)
	{
		return false;
	}
	OutObject = CurrentScope->Object;
	return true;
}

bool JsonSerializer::Serialize(const TSharedRef<FJsonObject>& Object, const TSharedRef<JsonWriter>& Writer)
{
	SerializeValue(MakeShared<FJsonValueObject>(Object.ToSharedPtr()), FString(), *Writer);
	return Writer->Close();
}

void JsonSerializer::SerializeValue(const TSharedPtr<FJsonValue>& Value, const FString& Identifier, JsonWriter& Writer)
{
	TArray<TSharedPtr<JsonElement>> ElementStack;
	{
		TSharedPtr<JsonElement> Root = MakeShared<JsonElement>();
		Root->Identifier = Identifier;
		Root->Value = Value;
		ElementStack.Add(Root);
	}

	while (ElementStack.Num() > 0)
	{
		TSharedPtr<JsonElement> Element = ElementStack.Pop();
		// A member stored as a null pointer is written as JSON null.
		if (!Element->Value)
		{
			Element->Value = MakeShared<FJsonValueNull>();
		}
		checkf(Element->Value->Type != EJson::None, "Element->Value->Type != EJson::None");
		const bool bNamed = !Element->Identifier.IsEmpty();

		switch (Element->Value->Type)
		{
		case EJson::Null:
			bNamed ? Writer.WriteNull(Element->Identifier) : Writer.WriteNull();
			break;
		case EJson::String:
			bNamed ? Writer.WriteValue(Element->Identifier, Element->Value->AsString()) : Writer.WriteValue(Element->Value->AsString());
			break;
		case EJson::Number:
			bNamed ? Writer.WriteValue(Element->Identifier, Element->Value->AsNumber()) : Writer.WriteValue(Element->Value->AsNumber());
			break;
		case EJson::Boolean:
			bNamed ? Writer.WriteValue(Element->Identifier, Element->Value->AsBool()) : Writer.WriteValue(Element->Value->AsBool());
			break;
		case EJson::Array:
			if (Element->bProcessed)
			{
				Writer.WriteArrayEnd();
			}
			else
			{
				Element->bProcessed = true;
				ElementStack.Add(Element);
				bNamed ? Writer.WriteArrayStart(Element->Identifier) : Writer.WriteArrayStart();
				const TArray<TSharedPtr<FJsonValue>>& Entries = Element->Value->AsArray();
				for (int32 Index = Entries.Num() - 1; Index >= 0; --Index)
				{
					TSharedPtr<JsonElement> Child = MakeShared<JsonElement>();
					Child->Value = Entries[Index];
					ElementStack.Add(Child);
				}
			}
			break;
		case EJson::Object:
			if (Element->bProcessed)
			{
				Writer.WriteObjectEnd();
			}
			else
			{
				Element->bProcessed = true;
				ElementStack.Add(Element);
				bNamed ? Writer.WriteObjectStart(Element->Identifier) : Writer.WriteObjectStart();
				TArray<FString> Keys;
				TArray<TSharedPtr<FJsonValue>> Values;
				// A value object without its object (made from malformed text) is written as an empty object.
				if (const TSharedPtr<FJsonObject>& Members = Element->Value->AsObject())
				{
					for (const auto& Pair : Members->Values)
					{
						Keys.Add(Pair.Key);
						Values.Add(Pair.Value);
					}
				}
				checkf(Keys.Num() == Values.Num(), "Keys.Num() == Values.Num()");
				for (int32 Index = Keys.Num() - 1; Index >= 0; --Index)
				{
					TSharedPtr<JsonElement> Child = MakeShared<JsonElement>();
					Child->Identifier = Keys[Index];
					Child->Value = Values[Index];
					ElementStack.Add(Child);
				}
			}
			break;
		default:
			std::fprintf(stderr, "LogJson: Fatal error: Could not print Json Value, unrecognized type.\n");
			std::abort();
		}
	}
}
