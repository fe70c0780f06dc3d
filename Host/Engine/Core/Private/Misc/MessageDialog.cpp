#include "Misc/MessageDialog.h"

#include "Host/HostServices.h"

namespace
{
	/** The answer that changes least. */
	EAppReturnType::Type GetHarmlessAnswer(EAppMsgType::Type Type)
	{
		switch (Type)
		{
		case EAppMsgType::Ok:
			return EAppReturnType::Ok;
		case EAppMsgType::YesNo:
		case EAppMsgType::YesNoYesAllNoAll:
		case EAppMsgType::YesNoYesAll:
			return EAppReturnType::No;
		case EAppMsgType::OkCancel:
		case EAppMsgType::YesNoCancel:
		case EAppMsgType::CancelRetryContinue:
		case EAppMsgType::YesNoYesAllNoAllCancel:
			return EAppReturnType::Cancel;
		}
		return EAppReturnType::Cancel;
	}

	/** A plain notice informs, a question warns. */
	EAppMsgCategory GetUsualCategory(EAppMsgType::Type Type)
	{
		return Type == EAppMsgType::Ok ? EAppMsgCategory::Info : EAppMsgCategory::Warning;
	}
}

EAppReturnType::Type FMessageDialog::Open(EAppMsgType::Type MessageType, const FText& Message)
{
	return Open(GetUsualCategory(MessageType), MessageType, GetHarmlessAnswer(MessageType), Message, FText::GetEmpty());
}

EAppReturnType::Type FMessageDialog::Open(EAppMsgType::Type MessageType, const FText& Message, const FText& Title)
{
	return Open(GetUsualCategory(MessageType), MessageType, GetHarmlessAnswer(MessageType), Message, Title);
}

EAppReturnType::Type FMessageDialog::Open(EAppMsgType::Type MessageType, EAppReturnType::Type DefaultValue, const FText& Message)
{
	return Open(GetUsualCategory(MessageType), MessageType, DefaultValue, Message, FText::GetEmpty());
}

EAppReturnType::Type FMessageDialog::Open(
	EAppMsgType::Type MessageType, EAppReturnType::Type DefaultValue, const FText& Message, const FText& Title)
{
	return Open(GetUsualCategory(MessageType), MessageType, DefaultValue, Message, Title);
}

EAppReturnType::Type FMessageDialog::Open(EAppMsgCategory MessageCategory, EAppMsgType::Type MessageType, const FText& Message)
{
	return Open(MessageCategory, MessageType, GetHarmlessAnswer(MessageType), Message, FText::GetEmpty());
}

EAppReturnType::Type FMessageDialog::Open(
	EAppMsgCategory MessageCategory, EAppMsgType::Type MessageType, const FText& Message, const FText& Title)
{
	return Open(MessageCategory, MessageType, GetHarmlessAnswer(MessageType), Message, Title);
}

EAppReturnType::Type FMessageDialog::Open(
	EAppMsgCategory MessageCategory, EAppMsgType::Type MessageType, EAppReturnType::Type DefaultValue, const FText& Message)
{
	return Open(MessageCategory, MessageType, DefaultValue, Message, FText::GetEmpty());
}

EAppReturnType::Type FMessageDialog::Open(EAppMsgCategory MessageCategory, EAppMsgType::Type MessageType, EAppReturnType::Type DefaultValue,
	const FText& Message, const FText& Title)
{
	FHostMessageDialog Dialog;
	Dialog.Type = MessageType;
	Dialog.Category = MessageCategory;
	Dialog.DefaultAnswer = DefaultValue;
	Dialog.Message = Message;
	Dialog.Title = Title;
	return FHostServices::OpenMessageDialog(Dialog);
}
