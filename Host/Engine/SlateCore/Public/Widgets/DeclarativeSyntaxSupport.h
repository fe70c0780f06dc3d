#pragma once

#include "CoreMinimal.h"
#include "Layout/Clipping.h"
#include "Layout/Visibility.h"
#include "Misc/Attribute.h"
#include "SlotBase.h"
#include "GenericPlatform/ICursor.h"
#include "Widgets/SNullWidget.h"

#include <tuple>
#include <utility>

class IToolTip;
class ISlateStyle;

/** SNew(SWidgetClass, positional arguments).Argument(..)[ child ] makes a widget and gives a TSharedRef to it. */
#define SNew(WidgetType, ...) \
	MakeSlateDeclaration<WidgetType>(FName(TEXT(#WidgetType)) __VA_OPT__(, ) __VA_ARGS__) <<= typename WidgetType::FArguments()

/** As SNew, and leaves the widget in a TSharedPtr before its Construct runs. */
#define SAssignNew(ExposeAs, WidgetType, ...) \
	MakeSlateDeclaration<WidgetType>(FName(TEXT(#WidgetType)) __VA_OPT__(, ) __VA_ARGS__).Expose(ExposeAs) <<= \
		typename WidgetType::FArguments()

#define SLATE_BEGIN_ARGS(InWidgetType) \
public: \
	struct FArguments : public TSlateBaseNamedArgs<InWidgetType> \
	{ \
		typedef FArguments WidgetArgsType; \
		typedef InWidgetType WidgetType; \
		FArguments()

#define SLATE_END_ARGS() \
	} \
	;

#define SLATE_PRIVATE_ATTRIBUTE_FUNCTION(AttrType, AttrName) \
	WidgetArgsType& AttrName(TAttribute<AttrType> InAttribute) \
	{ \
		_##AttrName = ::MoveTemp(InAttribute); \
		return static_cast<WidgetArgsType&>(*this); \
	} \
	template <typename UserClass, typename OwnerClass, typename... VarTypes> \
	WidgetArgsType& AttrName( \
		const UserClass* InUserObject, AttrType (OwnerClass::*InFunction)(std::type_identity_t<VarTypes>...) const, VarTypes... Vars) \
	{ \
		_##AttrName = TAttribute<AttrType>::CreateSP(InUserObject, InFunction, Vars...); \
		return static_cast<WidgetArgsType&>(*this); \
	} \
	template <typename... VarTypes> \
	WidgetArgsType& AttrName##_Static(AttrType (*InFunction)(std::type_identity_t<VarTypes>...), VarTypes... Vars) \
	{ \
		_##AttrName = TAttribute<AttrType>::CreateLambda([InFunction, Vars...]() -> AttrType { return InFunction(Vars...); }); \
		return static_cast<WidgetArgsType&>(*this); \
	} \
	template <typename FunctorType> \
	WidgetArgsType& AttrName##_Lambda(FunctorType&& InFunctor) \
	{ \
		_##AttrName = TAttribute<AttrType>::CreateLambda(::Forward<FunctorType>(InFunctor)); \
		return static_cast<WidgetArgsType&>(*this); \
	} \
	template <typename UserClass, typename OwnerClass> \
	WidgetArgsType& AttrName##_Raw(UserClass* InUserObject, AttrType (OwnerClass::*InFunction)() const) \
	{ \
		_##AttrName = TAttribute<AttrType>::CreateRaw(InUserObject, InFunction); \
		return static_cast<WidgetArgsType&>(*this); \
	}

#define SLATE_ATTRIBUTE(AttrType, AttrName) \
	TAttribute<AttrType> _##AttrName; \
	SLATE_PRIVATE_ATTRIBUTE_FUNCTION(AttrType, AttrName)

#define SLATE_ARGUMENT(ArgType, ArgName) \
	ArgType _##ArgName{}; \
	SLATE_PRIVATE_ARGUMENT_FUNCTION(ArgType, ArgName)

/** With a value in place: SLATE_ARGUMENT_DEFAULT(float, Width) { 1.0f }; */
#define SLATE_ARGUMENT_DEFAULT(ArgType, ArgName) \
	SLATE_PRIVATE_ARGUMENT_FUNCTION(ArgType, ArgName) \
	ArgType _##ArgName

#define SLATE_PRIVATE_ARGUMENT_FUNCTION(ArgType, ArgName) \
	WidgetArgsType& ArgName(ArgType InArg) \
	{ \
		_##ArgName = ::MoveTemp(InArg); \
		return static_cast<WidgetArgsType&>(*this); \
	}

#define SLATE_STYLE_ARGUMENT(ArgType, ArgName) \
	const ArgType* _##ArgName = nullptr; \
	WidgetArgsType& ArgName(const ArgType* InArg) \
	{ \
		_##ArgName = InArg; \
		return static_cast<WidgetArgsType&>(*this); \
	} \
	template <typename StyleSetType> \
	WidgetArgsType& ArgName(const StyleSetType& InStyleSet, FName StyleName) \
	{ \
		_##ArgName = &InStyleSet.template GetWidgetStyle<ArgType>(StyleName); \
		return static_cast<WidgetArgsType&>(*this); \
	}

#define SLATE_EVENT(DelegateName, EventName) \
	DelegateName _##EventName; \
	WidgetArgsType& EventName(const DelegateName& InDelegate) \
	{ \
		_##EventName = InDelegate; \
		return static_cast<WidgetArgsType&>(*this); \
	} \
	template <typename UserClass, typename FunctionType, typename... VarTypes> \
	requires(std::is_member_function_pointer_v<FunctionType>) WidgetArgsType& EventName( \
		UserClass* InUserObject, FunctionType InFunction, VarTypes... Vars) \
	{ \
		_##EventName = DelegateName::CreateSP(InUserObject, InFunction, Vars...); \
		return static_cast<WidgetArgsType&>(*this); \
	} \
	template <typename UserClass, typename FunctionType, typename... VarTypes> \
	WidgetArgsType& EventName##_Raw(UserClass* InUserObject, FunctionType InFunction, VarTypes... Vars) \
	{ \
		_##EventName = DelegateName::CreateRaw(InUserObject, InFunction, Vars...); \
		return static_cast<WidgetArgsType&>(*this); \
	} \
	template <typename FunctionType, typename... VarTypes> \
	WidgetArgsType& EventName##_Static(FunctionType InFunction, VarTypes... Vars) \
	{ \
		_##EventName = DelegateName::CreateStatic(InFunction, Vars...); \
		return static_cast<WidgetArgsType&>(*this); \
	} \
	template <typename FunctorType> \
	WidgetArgsType& EventName##_Lambda(FunctorType&& InFunctor) \
	{ \
		_##EventName = DelegateName::CreateLambda(::Forward<FunctorType>(InFunctor)); \
		return static_cast<WidgetArgsType&>(*this); \
	}

/** A slot with a name of its own: .Header()[ widget ]. */
#define SLATE_NAMED_SLOT(DeclarationType, SlotName) \
	TSlateNamedSlot<DeclarationType> SlotName() \
	{ \
		return TSlateNamedSlot<DeclarationType>(static_cast<DeclarationType&>(*this), _##SlotName); \
	} \
	FSlateNamedSlotContent _##SlotName;

/** The slot that [ widget ] fills. */
#define SLATE_DEFAULT_SLOT(DeclarationType, SlotName) \
	SLATE_NAMED_SLOT(DeclarationType, SlotName) \
	DeclarationType& operator[](const TSharedRef<SWidget>& InChild) \
	{ \
		_##SlotName.Widget = InChild; \
		return static_cast<DeclarationType&>(*this); \
	}

/** Slots added with operator+. */
#define SLATE_SLOT_ARGUMENT(SlotType, SlotName) \
	TArray<typename SlotType::FSlotArguments> _##SlotName; \
	WidgetArgsType& operator+(const typename SlotType::FSlotArguments& SlotToAdd) \
	{ \
		_##SlotName.Add(SlotToAdd); \
		return static_cast<WidgetArgsType&>(*this); \
	}

/** Content of a named slot; an empty widget until one is given. */
struct FSlateNamedSlotContent
{
	TSharedRef<SWidget> Widget = SNullWidget::NullWidget;
};

/** Takes the widget of a named slot and hands the declaration back. */
template <typename DeclarationType>
struct TSlateNamedSlot
{
	TSlateNamedSlot(DeclarationType& InDeclaration, FSlateNamedSlotContent& InContent)
		: Declaration(InDeclaration)
		, Content(InContent)
	{
	}
	DeclarationType& operator[](const TSharedRef<SWidget>& InChild)
	{
		Content.Widget = InChild;
		return Declaration;
	}
	DeclarationType& Declaration;
	FSlateNamedSlotContent& Content;
};

/** Values of the arguments that every widget has. */
struct FSlateBaseNamedArgs
{
	TAttribute<FText> _ToolTipText;
	TSharedPtr<IToolTip> _ToolTip;
	TAttribute<TOptional<EMouseCursor::Type>> _Cursor;
	TAttribute<bool> _IsEnabled = true;
	TAttribute<EVisibility> _Visibility = EVisibility();
	float _RenderOpacity = 1.0f;
	EWidgetClipping _Clipping = EWidgetClipping::Inherit;
	bool _bClippingSet = false;
	FName _Tag;
	bool _ForceVolatile = false;
};

/** The arguments that every widget has. */
template <typename InWidgetType>
struct TSlateBaseNamedArgs : public FSlateBaseNamedArgs
{
	typedef typename InWidgetType::FArguments WidgetArgsType;

	SLATE_PRIVATE_ATTRIBUTE_FUNCTION(FText, ToolTipText)
	SLATE_PRIVATE_ATTRIBUTE_FUNCTION(bool, IsEnabled)
	SLATE_PRIVATE_ATTRIBUTE_FUNCTION(EVisibility, Visibility)
	WidgetArgsType& ToolTip(TSharedPtr<IToolTip> InToolTip)
	{
		_ToolTip = ::MoveTemp(InToolTip);
		return static_cast<WidgetArgsType&>(*this);
	}
	WidgetArgsType& Cursor(TAttribute<TOptional<EMouseCursor::Type>> InCursor)
	{
		_Cursor = ::MoveTemp(InCursor);
		return static_cast<WidgetArgsType&>(*this);
	}
	WidgetArgsType& Cursor(EMouseCursor::Type InCursor)
	{
		_Cursor = TOptional<EMouseCursor::Type>(InCursor);
		return static_cast<WidgetArgsType&>(*this);
	}
	SLATE_PRIVATE_ARGUMENT_FUNCTION(float, RenderOpacity)
	WidgetArgsType& Clipping(EWidgetClipping InClipping)
	{
		_Clipping = InClipping;
		_bClippingSet = true;
		return static_cast<WidgetArgsType&>(*this);
	}
	SLATE_PRIVATE_ARGUMENT_FUNCTION(FName, Tag)
	SLATE_PRIVATE_ARGUMENT_FUNCTION(bool, ForceVolatile)
};

/** Makes a widget from its positional arguments and, by <<=, from its named ones. */
template <typename WidgetType, typename... RequiredArgTypes>
struct TSlateDeclaration
{
	TSlateDeclaration(FName InTypeName, RequiredArgTypes&&... InRequired)
		: Widget(MakeShared<WidgetType>())
		, Required(std::forward<RequiredArgTypes>(InRequired)...)
	{
		Widget->SetType(InTypeName);
	}
	template <typename ExposeAsType>
	TSlateDeclaration& Expose(ExposeAsType& OutVariable)
	{
		OutVariable = Widget;
		return *this;
	}
	TSharedRef<WidgetType> operator<<=(const typename WidgetType::FArguments& InArgs)
	{
		Widget->SWidgetConstruct(InArgs);
		std::apply([this, &InArgs](auto&&... Arguments) { Widget->Construct(InArgs, std::forward<decltype(Arguments)>(Arguments)...); },
			std::move(Required));
		return Widget;
	}

private:
	TSharedRef<WidgetType> Widget;
	std::tuple<RequiredArgTypes&&...> Required;
};

template <typename WidgetType, typename... RequiredArgTypes>
TSlateDeclaration<WidgetType, RequiredArgTypes...> MakeSlateDeclaration(FName TypeName, RequiredArgTypes&&... Required)
{
	return TSlateDeclaration<WidgetType, RequiredArgTypes...>(TypeName, std::forward<RequiredArgTypes>(Required)...);
}
