#include "KeyValuesText.h"

namespace
{
	enum class ETokenKind
	{
		Text,
		Open,
		Close,
		Condition,
		End,
		Error,
	};

	struct FToken
	{
		ETokenKind Kind = ETokenKind::End;
		FString Text;
	};

	class FTokenizer
	{
	public:
		explicit FTokenizer(const FString& InText) : Text(InText.GetStd()) {}

		FToken Next()
		{
			SkipBlanksAndComments();
			FToken Token;
			if (Pos >= Text.size())
			{
				Token.Kind = ETokenKind::End;
				return Token;
			}
			const char16_t Unit = Text[Pos];
			if (Unit == u'{' || Unit == u'}')
			{
				++Pos;
				Token.Kind = Unit == u'{' ? ETokenKind::Open : ETokenKind::Close;
				return Token;
			}
			if (Unit == u'[')
			{
				const size_t End = Text.find(u']', Pos);
				if (End == std::u16string::npos)
				{
					return Error(TEXT("a condition without its closing bracket"));
				}
				Token.Kind = ETokenKind::Condition;
				Token.Text = FString(Text.substr(Pos, End + 1 - Pos));
				Pos = End + 1;
				return Token;
			}
			if (Unit == u'"')
			{
				return Quoted();
			}
			// A bare word runs to a blank, a brace or a quote.
			const size_t Start = Pos;
			while (Pos < Text.size() && !IsBlank(Text[Pos]) && Text[Pos] != u'{' && Text[Pos] != u'}' && Text[Pos] != u'"')
			{
				++Pos;
			}
			Token.Kind = ETokenKind::Text;
			Token.Text = FString(Text.substr(Start, Pos - Start));
			return Token;
		}

		int32 Line() const { return CurrentLine; }
		FString ErrorMessage;

	private:
		static bool IsBlank(char16_t Unit) { return Unit == u' ' || Unit == u'\t' || Unit == u'\r' || Unit == u'\n'; }

		void SkipBlanksAndComments()
		{
			while (Pos < Text.size())
			{
				if (Text[Pos] == u'\n')
				{
					++CurrentLine;
					++Pos;
				}
				else if (IsBlank(Text[Pos]) || Text[Pos] == 0xFEFF)
				{
					++Pos;
				}
				else if (Text[Pos] == u'/' && Pos + 1 < Text.size() && Text[Pos + 1] == u'/')
				{
					while (Pos < Text.size() && Text[Pos] != u'\n')
					{
						++Pos;
					}
				}
				else
				{
					return;
				}
			}
		}

		FToken Quoted()
		{
			const int32 StartLine = CurrentLine;
			++Pos;
			std::u16string Value;
			while (Pos < Text.size())
			{
				const char16_t Unit = Text[Pos];
				if (Unit == u'"')
				{
					++Pos;
					FToken Token;
					Token.Kind = ETokenKind::Text;
					Token.Text = FString(std::move(Value));
					return Token;
				}
				if (Unit == u'\\' && Pos + 1 < Text.size())
				{
					const char16_t Escaped = Text[Pos + 1];
					Pos += 2;
					switch (Escaped)
					{
					case u'"':
						Value += u'"';
						break;
					case u'\\':
						Value += u'\\';
						break;
					case u'n':
						Value += u'\n';
						break;
					case u't':
						Value += u'\t';
						break;
					default:
						// Not an escape: both characters stand.
						Value += u'\\';
						Value += Escaped;
						if (Escaped == u'\n')
						{
							++CurrentLine;
						}
						break;
					}
					continue;
				}
				if (Unit == u'\n')
				{
					++CurrentLine;
				}
				Value += Unit;
				++Pos;
			}
			CurrentLine = StartLine;
			return Error(TEXT("a quoted text that is never closed"));
		}

		FToken Error(const TCHAR* Message)
		{
			ErrorMessage = Message;
			FToken Token;
			Token.Kind = ETokenKind::Error;
			return Token;
		}

		const std::u16string& Text;
		size_t Pos = 0;
		int32 CurrentLine = 1;
	};

	// Reads entries into Parent up to the end of the text (at the top) or the closing brace (in a block).
	bool ParseEntries(FTokenizer& Tokens, FKeyValues& Parent, bool bInBlock, FString& OutError)
	{
		auto Fail = [&](const FString& Message)
		{
			OutError = FString::Printf(TEXT("line %d: %s"), Tokens.Line(), *Message);
			return false;
		};

		FToken Token = Tokens.Next();
		while (true)
		{
			switch (Token.Kind)
			{
			case ETokenKind::Error:
				return Fail(Tokens.ErrorMessage);
			case ETokenKind::End:
				return bInBlock ? Fail(TEXT("the text ends inside a block")) : true;
			case ETokenKind::Close:
				return bInBlock ? true : Fail(TEXT("a closing brace without its block"));
			case ETokenKind::Open:
				return Fail(TEXT("a block without a key"));
			case ETokenKind::Condition:
				return Fail(TEXT("a condition without a key"));
			case ETokenKind::Text:
				break;
			}

			FKeyValues Entry;
			Entry.Key = Token.Text;
			FToken ValueToken = Tokens.Next();
			if (ValueToken.Kind == ETokenKind::Open)
			{
				Entry.bIsBlock = true;
				if (!ParseEntries(Tokens, Entry, true, OutError))
				{
					return false;
				}
			}
			else if (ValueToken.Kind == ETokenKind::Text)
			{
				Entry.Value = ValueToken.Text;
			}
			else if (ValueToken.Kind == ETokenKind::Error)
			{
				return Fail(Tokens.ErrorMessage);
			}
			else
			{
				return Fail(FString::Printf(TEXT("the key \"%s\" has no value"), *Entry.Key));
			}
			Parent.Children.push_back(std::move(Entry));

			Token = Tokens.Next();
			if (Token.Kind == ETokenKind::Condition)
			{
				Token = Tokens.Next();
			}
		}
	}

	FString Escape(const FString& Text)
	{
		FString Out;
		for (const TCHAR Unit : Text)
		{
			switch (Unit)
			{
			case u'"':
				Out += TEXT("\\\"");
				break;
			case u'\\':
				Out += TEXT("\\\\");
				break;
			case u'\n':
				Out += TEXT("\\n");
				break;
			case u'\t':
				Out += TEXT("\\t");
				break;
			default:
				Out += Unit;
				break;
			}
		}
		return Out;
	}

	void WriteEntries(const FKeyValues& Parent, int32 Depth, FString& Out)
	{
		const FString Indent(std::u16string(static_cast<size_t>(Depth), u'\t'));
		for (const FKeyValues& Entry : Parent.Children)
		{
			Out += Indent + TEXT("\"") + Escape(Entry.Key) + TEXT("\"");
			if (Entry.bIsBlock)
			{
				Out += TEXT("\n") + Indent + TEXT("{\n");
				WriteEntries(Entry, Depth + 1, Out);
				Out += Indent + TEXT("}\n");
			}
			else
			{
				Out += TEXT("\t\t\"") + Escape(Entry.Value) + TEXT("\"\n");
			}
		}
	}
}

FKeyValues* FKeyValues::FindChild(const FString& ChildKey)
{
	for (FKeyValues& Child : Children)
	{
		if (Child.Key.Equals(ChildKey, ESearchCase::IgnoreCase))
		{
			return &Child;
		}
	}
	return nullptr;
}

const FKeyValues* FKeyValues::FindChild(const FString& ChildKey) const
{
	return const_cast<FKeyValues*>(this)->FindChild(ChildKey);
}

bool FKeyValuesText::Parse(const FString& Text, FKeyValues& OutRoot, FString& OutError)
{
	OutRoot = FKeyValues();
	OutRoot.bIsBlock = true;
	FTokenizer Tokens(Text);
	return ParseEntries(Tokens, OutRoot, false, OutError);
}

FString FKeyValuesText::Write(const FKeyValues& Root)
{
	FString Out;
	WriteEntries(Root, 0, Out);
	return Out;
}
