#include "Host/AccessChanges.h"

namespace
{
	using EKind = FAccessChange::EKind;

	FAccessChange& Add(TArray<FAccessChange>& Out, EKind Kind, const FAccessNode& Node)
	{
		FAccessChange& Change = Out.AddDefaulted_GetRef();
		Change.Kind = Kind;
		Change.Id = Node.Id;
		Change.Parent = Node.Parent;
		return Change;
	}

	/** Stands where it stood. */
	bool IsKept(const FAccessChanges::FNodes& Other, const FAccessNode& Node)
	{
		const FAccessNode* const Twin = Other.Find(Node.Id);
		return Twin && Twin->Parent == Node.Parent && Twin->Role == Node.Role;
	}

	bool IsSameRange(const TOptional<FHostAccessRange>& A, const TOptional<FHostAccessRange>& B)
	{
		return A.IsSet() == B.IsSet() && (!A.IsSet() || (A->Value == B->Value && A->Minimum == B->Minimum && A->Maximum == B->Maximum));
	}

	bool IsSameRect(const FSlateRect& A, const FSlateRect& B)
	{
		return A.Left == B.Left && A.Top == B.Top && A.Right == B.Right && A.Bottom == B.Bottom;
	}
}

TArray<FAccessChange> FAccessChanges::Compare(const FNodes& Before, const FNodes& Now, uint32 RootId)
{
	TArray<FAccessChange> Changes;
	AddRemoved(Before, Now, *Before.Find(RootId), Changes);
	AddAdded(Before, Now, *Now.Find(RootId), Changes);
	for (const TPair<uint32, FAccessNode>& Pair : Now)
	{
		if (const FAccessNode* const Old = Before.Find(Pair.Key); Old && Old->Role == Pair.Value.Role)
		{
			AddDifferences(*Old, Pair.Value, Changes);
		}
	}
	return Changes;
}

// From the last child to the first, so that the indices told are true one after the other.
void FAccessChanges::AddRemoved(const FNodes& Before, const FNodes& Now, const FAccessNode& Node, TArray<FAccessChange>& Out)
{
	for (int32 Index = Node.Children.Num() - 1; Index >= 0; --Index)
	{
		const FAccessNode& Child = *Before.Find(Node.Children[Index]);
		if (IsKept(Now, Child))
		{
			AddRemoved(Before, Now, Child, Out);
			continue;
		}
		Add(Out, EKind::Removed, Child).Index = Index;
	}
}

void FAccessChanges::AddAdded(const FNodes& Before, const FNodes& Now, const FAccessNode& Node, TArray<FAccessChange>& Out)
{
	for (int32 Index = 0; Index < Node.Children.Num(); ++Index)
	{
		const FAccessNode& Child = *Now.Find(Node.Children[Index]);
		if (IsKept(Before, Child))
		{
			AddAdded(Before, Now, Child, Out);
			continue;
		}
		Add(Out, EKind::Added, Child).Index = Index;
	}
}

void FAccessChanges::AddDifferences(const FAccessNode& Old, const FAccessNode& New, TArray<FAccessChange>& Out)
{
	if (!Old.Name.Equals(New.Name))
	{
		Add(Out, EKind::Name, New).Text = New.Name;
	}
	if (!Old.Description.Equals(New.Description))
	{
		Add(Out, EKind::Description, New).Text = New.Description;
	}
	if (Old.States != New.States)
	{
		Add(Out, EKind::States, New).Bits = Old.States ^ New.States;
	}
	if (New.bHasText)
	{
		AddTextDifferences(Old, New, Out);
	}
	if (!IsSameRange(Old.Range, New.Range))
	{
		Add(Out, EKind::Value, New);
	}
	if (!IsSameRect(Old.Rect, New.Rect))
	{
		Add(Out, EKind::Bounds, New);
	}
}

// What is equal at both ends stays; the rest went and came.
void FAccessChanges::AddTextDifferences(const FAccessNode& Old, const FAccessNode& New, TArray<FAccessChange>& Out)
{
	const FString& Before = Old.Text.ToString();
	const FString& Now = New.Text.ToString();
	if (!Before.Equals(Now))
	{
		const int32 Shorter = FMath::Min(Before.Len(), Now.Len());
		int32 Front = 0;
		while (Front < Shorter && Before[Front] == Now[Front])
		{
			++Front;
		}
		int32 Back = 0;
		while (Back < Shorter - Front && Before[Before.Len() - 1 - Back] == Now[Now.Len() - 1 - Back])
		{
			++Back;
		}
		if (Front + Back < Before.Len())
		{
			FAccessChange& Change = Add(Out, EKind::TextRemoved, New);
			Change.Index = Front;
			Change.Text = Before.Mid(Front, Before.Len() - Front - Back);
		}
		if (Front + Back < Now.Len())
		{
			FAccessChange& Change = Add(Out, EKind::TextInserted, New);
			Change.Index = Front;
			Change.Text = Now.Mid(Front, Now.Len() - Front - Back);
		}
	}
	if (Old.Caret != New.Caret)
	{
		Add(Out, EKind::Caret, New).Index = New.Caret;
	}
	if (Old.SelectionBegin != New.SelectionBegin || Old.SelectionEnd != New.SelectionEnd)
	{
		Add(Out, EKind::Selection, New);
	}
}
