#pragma once

#include "Host/AccessTree.h"
#include "Layout/ArrangedWidget.h"

/** One walk over what is on screen. Nodes name each other by index, the window first. Game thread. */
class FAccessLook
{
public:
	/** Walks all layers of the application. Without one there is only the window. */
	static TArray<FAccessNode> Take();

private:
	/** Takes up the texts below a widget in place of nodes of their own. */
	struct FCollector
	{
		FString Text;
		/** Pieces of one text stand without anything in between. */
		bool bJoins = false;

		void Add(const FString& Piece);
	};
	/** What a widget finds around it. */
	struct FContext
	{
		int32 Parent = 0;
		FSlateRect Clip;
		bool bEnabled = true;
		/** Texts in a row are pieces of one. */
		bool bJoinsTexts = false;
		/** Of FAccessRule. */
		const TCHAR* BoxName = nullptr;
		/** Null where texts are nodes. */
		FCollector* Texts = nullptr;
	};

	void VisitLayers();
	void Visit(const FArrangedWidget& Arranged, const FContext& Context);
	void VisitChildren(const FArrangedWidget& Arranged, const FContext& Context);
	/** A widget that has a role. */
	void AddNode(const FArrangedWidget& Arranged, const FContext& Context, const FHostAccess& Access, const struct FAccessRule* Rule);
	/** Of what was added below a node last: its first text, or else whatever is called something. */
	FString FindFirstName(int32 Index) const;
	/** A box of text pieces, or a line of code. */
	void AddParagraph(const FArrangedWidget& Arranged, const FContext& Context);
	/** Names that stand beside what they name. */
	void NameRest();
	/** What the first part of a folded row says, for what needs a name and stands in the second; empty for all else. */
	FString FindRowName(const FAccessNode& Node) const;
	/** By the label at its side, or the heading above; a name stays where there is neither. */
	void NameByNeighbour(FAccessNode& Node, bool bAlsoAbove);

	TArray<FAccessNode> Nodes;
	/** The first node of what lies over the window's own content. */
	int32 FirstAbove = 0;
};
