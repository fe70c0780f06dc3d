#pragma once

#include "CoreMinimal.h"

class UObject;

/** One configuration property as a page shows it. */
struct FSettingsProperty
{
	enum class EKind : uint8
	{
		Text,
		/** Texts, one a line. */
		Lines,
		Bool,
		WholeNumber,
		Number,
	};

	FString Name;
	/** What it is for, in words for users; empty when nobody says. */
	FString Description;
	/** Heading that it stands under; empty for none. */
	FString Group;
	EKind Kind = EKind::Text;
	bool bHasRange = false;
	double Min = 0.0;
	double Max = 0.0;
	/** Names of the whole numbers from 0 on, where the property is a choice. */
	TArray<FString> Choices;

	/** It names a folder, or a file: one line, however long. */
	bool IsFolder() const;
	bool IsPath() const;
	/** The name in words: "bIncludeEngineSource" becomes "Include Engine Source". */
	FString GetLabel() const;
};

/** Reads and changes the configuration properties of an object by name, as texts. */
class FSettingsProperties
{
public:
	/** In the order in which the object shows them. */
	static TArray<FSettingsProperty> List(UObject& Object);
	/** The present value; "True" and "False" for a bool, the number for a choice. */
	static FString GetText(UObject& Object, const FSettingsProperty& Property);
	/** What the properties are before anybody has set them, as GetText gives it, in the order of the list. */
	static TArray<FString> ReadDefaults(UObject& Object, const TArray<FSettingsProperty>& Properties);
	/**
	 * Gives the property the value that a text stands for. Saves nothing.
	 * @return Why not, in words, the value being left as it was; empty when it was taken.
	 */
	static FString SetText(UObject& Object, const FSettingsProperty& Property, const FString& Text);
};
