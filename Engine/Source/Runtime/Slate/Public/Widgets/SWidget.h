#pragma once

#include "CoreMinimal.h"
#include "Input/Reply.h"
#include "Layout/Margin.h"
#include "Misc/Attribute.h"
#include "Types/SlateEnums.h"

#include <memory>

class SWidget;
// The object of the drawing backend that shows a widget on screen. Its type is known only to Slate's own code
// and to the backend header that the editor side uses; everyone else holds it as an opaque handle.
class FNativeWidget;
struct FNativeWidgetGuard;

struct FGeometry
{
};

// A size and a child's place in the layout that the widget layer computes itself, for backends whose native
// widgets do not lay out their children (Win32). In the backend's pixels.
struct FSlateLayoutSize
{
	float Width = 0.0f;
	float Height = 0.0f;
};

struct FSlateArrangedChild
{
	SWidget* Widget = nullptr;
	float X = 0.0f;
	float Y = 0.0f;
	float Width = 0.0f;
	float Height = 0.0f;
	// The area the panel gave the child's slot (a grid cell, a box's slot), its padding included; the child
	// stands in it where its alignment puts it.
	float SlotX = 0.0f;
	float SlotY = 0.0f;
	float SlotWidth = 0.0f;
	float SlotHeight = 0.0f;
};

// Arguments every widget takes.
template <typename WidgetArgsType>
struct TSlateBaseNamedArgs
{
	TAttribute<bool> _IsEnabled = true;
	TAttribute<EVisibility> _Visibility = EVisibility::Visible;
	TAttribute<FText> _ToolTipText;

	WidgetArgsType& Me() { return static_cast<WidgetArgsType&>(*this); }
	WidgetArgsType& IsEnabled(const TAttribute<bool>& In)
	{
		_IsEnabled = In;
		return Me();
	}
	template <typename UserClass>
	WidgetArgsType& IsEnabled(UserClass* Object, bool (UserClass::*Method)() const)
	{
		_IsEnabled = TAttribute<bool>::Create(Object, Method);
		return Me();
	}
	WidgetArgsType& Visibility(const TAttribute<EVisibility>& In)
	{
		_Visibility = In;
		return Me();
	}
	template <typename UserClass>
	WidgetArgsType& Visibility(UserClass* Object, EVisibility (UserClass::*Method)() const)
	{
		_Visibility = TAttribute<EVisibility>::Create(Object, Method);
		return Me();
	}
	WidgetArgsType& ToolTipText(const TAttribute<FText>& In)
	{
		_ToolTipText = In;
		return Me();
	}
};

#define SLATE_BEGIN_ARGS(WidgetType)                                                                                   \
public:                                                                                                                \
	struct FArguments : public TSlateBaseNamedArgs<FArguments>                                                         \
	{                                                                                                                  \
		using WidgetArgsType = FArguments;                                                                             \
		FArguments()

#define SLATE_END_ARGS()                                                                                               \
	}                                                                                                                  \
	;

// A value fixed at construction.
#define SLATE_ARGUMENT(ArgType, ArgName)                                                                               \
	ArgType _##ArgName{};                                                                                              \
	WidgetArgsType& ArgName(ArgType InArg)                                                                             \
	{                                                                                                                  \
		_##ArgName = InArg;                                                                                            \
		return *this;                                                                                                  \
	}

// A constant or a getter bound to an object's member or a lambda.
#define SLATE_ATTRIBUTE(AttrType, AttrName)                                                                            \
	TAttribute<AttrType> _##AttrName;                                                                                  \
	WidgetArgsType& AttrName(const TAttribute<AttrType>& InAttribute)                                                  \
	{                                                                                                                  \
		_##AttrName = InAttribute;                                                                                     \
		return *this;                                                                                                  \
	}                                                                                                                  \
	template <typename UserClass, typename ResultType>                                                                 \
	WidgetArgsType& AttrName(UserClass* Object, ResultType (UserClass::*Method)() const)                              \
	{                                                                                                                  \
		_##AttrName = TAttribute<AttrType>::CreateLambda(                                                              \
			[Getter = TDelegate<ResultType()>::CreateSP(Object, Method)]() -> AttrType { return Getter.Execute(); });  \
		return *this;                                                                                                  \
	}                                                                                                                  \
	template <typename UserClass, typename ResultType>                                                                 \
	WidgetArgsType& AttrName(UserClass* Object, ResultType (UserClass::*Method)())                                    \
	{                                                                                                                  \
		_##AttrName = TAttribute<AttrType>::CreateLambda(                                                              \
			[Getter = TDelegate<ResultType()>::CreateSP(Object, Method)]() -> AttrType { return Getter.Execute(); });  \
		return *this;                                                                                                  \
	}

// A handler: a delegate, or an object's member with optional extra values passed after the event's own.
#define SLATE_EVENT(DelegateType, EventName)                                                                           \
	DelegateType _##EventName;                                                                                         \
	WidgetArgsType& EventName(const DelegateType& InDelegate)                                                          \
	{                                                                                                                  \
		_##EventName = InDelegate;                                                                                     \
		return *this;                                                                                                  \
	}                                                                                                                  \
	template <typename UserClass, typename MethodType, typename... VarTypes>                                           \
	WidgetArgsType& EventName(UserClass* Object, MethodType Method, VarTypes... Vars)                                  \
	{                                                                                                                  \
		_##EventName = DelegateType::CreateSP(Object, Method, Vars...);                                                \
		return *this;                                                                                                  \
	}                                                                                                                  \
	template <typename FunctorType>                                                                                    \
	WidgetArgsType& EventName##_Lambda(FunctorType&& Functor)                                                          \
	{                                                                                                                  \
		_##EventName = DelegateType::CreateLambda(std::forward<FunctorType>(Functor));                                 \
		return *this;                                                                                                  \
	}

// The one child given with [ ].
#define SLATE_DEFAULT_SLOT(DeclarationType, SlotName)                                                                  \
	TSharedPtr<SWidget> _##SlotName;                                                                                   \
	DeclarationType& operator[](const TSharedRef<SWidget>& InChild)                                                    \
	{                                                                                                                  \
		_##SlotName = InChild;                                                                                         \
		return *this;                                                                                                  \
	}                                                                                                                  \
	DeclarationType& SlotName(const TSharedRef<SWidget>& InChild)                                                      \
	{                                                                                                                  \
		_##SlotName = InChild;                                                                                         \
		return *this;                                                                                                  \
	}

// A list of slots added with +.
#define SLATE_SUPPORTS_SLOT(SlotType)                                                                                  \
	TArray<SlotType> Slots;                                                                                            \
	WidgetArgsType& operator+(const SlotType& InSlot)                                                                  \
	{                                                                                                                  \
		Slots.Add(InSlot);                                                                                             \
		return *this;                                                                                                  \
	}

// The base of every widget. A widget makes its native widget when it is first shown; the Slate tree owns the
// native widgets, and one that its parent already deleted is simply gone (guarded pointer), never deleted twice.
class SWidget : public TSharedFromThis<SWidget>
{
public:
	SWidget();
	virtual ~SWidget();
	SWidget(const SWidget&) = delete;
	SWidget& operator=(const SWidget&) = delete;

	// The native widget that draws this widget, made on first use.
	FNativeWidget* GetNativeWidget();
	// The native widget if it has been made and still exists, else null; never makes one.
	FNativeWidget* GetNativeWidgetIfMade() const;
	bool HasNativeWidget() const { return GetNativeWidgetIfMade() != nullptr; }

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) {}
	// Asks the bound attributes again and brings the native widget up to date.
	virtual void RefreshAttributes();
	// Children in the Slate tree, for walks such as finding a widget by its text key.
	virtual TArray<TSharedRef<SWidget>> GetChildren() const { return {}; }
	// The text the widget shows, for rows drawn without widgets and for tests.
	virtual FString GetDisplayText() const;

	void SetVisibility(const TAttribute<EVisibility>& InVisibility) { VisibilityAttribute = InVisibility; }
	void SetEnabled(const TAttribute<bool>& InEnabled) { EnabledAttribute = InEnabled; }
	EVisibility GetVisibility() const { return VisibilityAttribute.Get(EVisibility::Visible); }
	bool IsEnabled() const { return EnabledAttribute.Get(true); }

	// The key of the localisable text the widget shows; also the native widget's name.
	const FString& GetTextKey() const { return TextKey; }
	const FString& GetTypeName() const { return TypeName; }

	template <typename ArgsType>
	void SWidgetConstruct(const ArgsType& Args)
	{
		EnabledAttribute = Args._IsEnabled;
		VisibilityAttribute = Args._Visibility;
		ToolTip = Args._ToolTipText;
	}
	void SetTypeName(const FString& InTypeName) { TypeName = InTypeName; }

	// Whether the widget wants Tick; the application ticks only those.
	virtual bool WantsTick() const { return false; }

	// The size the widget asks for, and where its children stand in an area of Width by Height. Scale turns the
	// widget's own measures (padding, size overrides) into the backend's pixels. A collapsed widget asks for
	// nothing and is given no place.
	virtual FSlateLayoutSize ComputeDesiredSize(float Scale) const;
	virtual void ArrangeChildren(float Width, float Height, float Scale, TArray<FSlateArrangedChild>& Out) const {}
	bool IsCollapsed() const { return GetVisibility() == EVisibility::Collapsed; }

protected:
	virtual FNativeWidget* CreateNativeWidget() = 0;
	// The size the native widget asks for by itself (its text as measured, a control's least size); none when
	// the backend measures nothing.
	FSlateLayoutSize MeasureNative(float Scale) const;
	// Kept while the native widget is being made, so that a refresh during its making already reaches it.
	void SetNativeWidget(FNativeWidget* Widget);
	void SetTextKey(const FText& Text);
	void ApplyVisibilityAndEnabled();

	std::unique_ptr<FNativeWidgetGuard> Native;
	TAttribute<bool> EnabledAttribute = true;
	TAttribute<EVisibility> VisibilityAttribute = EVisibility::Visible;
	TAttribute<FText> ToolTip;
	FString TextKey;
	FString TypeName;
};

// The arguments of SNew and SAssignNew: construct the widget, then hand it its arguments.
template <typename WidgetType>
struct TDecl
{
	explicit TDecl(const char* InTypeName) : Widget(MakeShared<WidgetType>())
	{
		const std::string Name(InTypeName);
		Widget->SetTypeName(FString(Name.substr(0, Name.find('<'))));
	}
	template <typename PtrType>
	TDecl& Expose(PtrType& OutPtr)
	{
		OutPtr = Widget;
		return *this;
	}
	TSharedRef<WidgetType> operator<<=(const typename WidgetType::FArguments& InArgs) const
	{
		Widget->SWidgetConstruct(InArgs);
		Widget->Construct(InArgs);
		return Widget;
	}
	TSharedRef<WidgetType> Widget;
};

// The same for widgets whose Construct takes one more value after the arguments (table rows take their list).
template <typename WidgetType, typename ExtraType>
struct TDeclWithExtra
{
	TDeclWithExtra(const char* InTypeName, ExtraType InExtra) : Widget(MakeShared<WidgetType>()), Extra(InExtra)
	{
		const std::string Name(InTypeName);
		Widget->SetTypeName(FString(Name.substr(0, Name.find('<'))));
	}
	template <typename PtrType>
	TDeclWithExtra& Expose(PtrType& OutPtr)
	{
		OutPtr = Widget;
		return *this;
	}
	TSharedRef<WidgetType> operator<<=(const typename WidgetType::FArguments& InArgs) const
	{
		Widget->SWidgetConstruct(InArgs);
		Widget->Construct(InArgs, Extra);
		return Widget;
	}
	TSharedRef<WidgetType> Widget;
	ExtraType Extra;
};

template <typename WidgetType>
TDecl<WidgetType> MakeDecl(const char* InTypeName)
{
	return TDecl<WidgetType>(InTypeName);
}
template <typename WidgetType, typename ExtraType>
TDeclWithExtra<WidgetType, ExtraType> MakeDecl(const char* InTypeName, const ExtraType& Extra)
{
	return TDeclWithExtra<WidgetType, ExtraType>(InTypeName, Extra);
}

// The type name kept for a widget is its class name without template arguments.
#define SNew(WidgetType, ...) MakeDecl<WidgetType>(#WidgetType __VA_OPT__(, ) __VA_ARGS__) <<= WidgetType::FArguments()
#define SAssignNew(ExposeAs, WidgetType, ...)                                                                          \
	MakeDecl<WidgetType>(#WidgetType __VA_OPT__(, ) __VA_ARGS__).Expose(ExposeAs) <<= WidgetType::FArguments()

// The widget with this text key below Root (Root included), or null.
TSharedPtr<SWidget> FindWidgetByKey(const TSharedRef<SWidget>& Root, const FString& Key);
// Every widget below Root (Root included) whose type name is TypeName, in tree order.
TArray<TSharedRef<SWidget>> FindWidgetsByType(const TSharedRef<SWidget>& Root, const FString& TypeName);
