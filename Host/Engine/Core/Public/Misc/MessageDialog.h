#pragma once

#include "GenericPlatform/GenericPlatformMisc.h"
#include "Internationalization/Text.h"

/**
 * A question to the user that blocks until it is answered. Shown by the program (FHostServices). When nobody can be
 * asked (no program connected, unattended run, call from another than the game thread) the default answer is taken
 * and printed on the standard error stream. The default is the given one, else the most harmless button: No, Cancel
 * or, where there is no other, Ok.
 */
class CORE_API FMessageDialog
{
public:
	static EAppReturnType::Type Open(EAppMsgType::Type MessageType, const FText& Message);
	static EAppReturnType::Type Open(EAppMsgType::Type MessageType, const FText& Message, const FText& Title);
	static EAppReturnType::Type Open(EAppMsgType::Type MessageType, EAppReturnType::Type DefaultValue, const FText& Message);
	static EAppReturnType::Type Open(
		EAppMsgType::Type MessageType, EAppReturnType::Type DefaultValue, const FText& Message, const FText& Title);
	static EAppReturnType::Type Open(EAppMsgCategory MessageCategory, EAppMsgType::Type MessageType, const FText& Message);
	static EAppReturnType::Type Open(
		EAppMsgCategory MessageCategory, EAppMsgType::Type MessageType, const FText& Message, const FText& Title);
	static EAppReturnType::Type Open(
		EAppMsgCategory MessageCategory, EAppMsgType::Type MessageType, EAppReturnType::Type DefaultValue, const FText& Message);
	static EAppReturnType::Type Open(EAppMsgCategory MessageCategory, EAppMsgType::Type MessageType, EAppReturnType::Type DefaultValue,
		const FText& Message, const FText& Title);
};
