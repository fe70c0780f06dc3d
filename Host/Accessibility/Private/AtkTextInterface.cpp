#include "AtkBridge.h"
#include "AtkObjects.h"
#include "AtkWords.h"
#include "Containers/StringConv.h"

#include <algorithm>
#include <cstring>
#include <string>

// Texts as clients read them: characters, words, lines. Places are characters in all functions here; the host counts UTF-16 units.

namespace
{
	const FAccessTree* GetTree()
	{
		const FAtkBridge* const Bridge = FAtkBridge::Get();
		return Bridge ? &Bridge->GetTree() : nullptr;
	}

	const FAccessNode* FindNode(gpointer Object)
	{
		const FAccessNode* const Node = GetTree() ? GetTree()->Find(AtkObjects::GetId(Object)) : nullptr;
		return Node && Node->bHasText ? Node : nullptr;
	}

	/** A text by its characters; empty for an object that is gone. */
	std::u32string GetCharacters(gpointer Object)
	{
		std::u32string Characters;
		if (const FAccessNode* const Node = FindNode(Object))
		{
			const std::string Bytes = AtkWords::ToUtf8(Node->Text.ToString());
			for (const char* At = Bytes.data(); At < Bytes.data() + Bytes.size(); At = g_utf8_next_char(At))
			{
				Characters.push_back(static_cast<char32_t>(g_utf8_get_char(At)));
			}
		}
		return Characters;
	}

	gchar* MakeText(const std::u32string& Characters, size_t Begin, size_t End)
	{
		GString* const Out = g_string_new(nullptr);
		for (size_t Index = Begin; Index < End && Index < Characters.size(); ++Index)
		{
			g_string_append_unichar(Out, static_cast<gunichar>(Characters[Index]));
		}
		return g_string_free(Out, FALSE);
	}

	gchar* GetText(AtkText* Text, gint Begin, gint End)
	{
		const std::u32string Characters = GetCharacters(Text);
		const size_t Last = End < 0 ? Characters.size() : static_cast<size_t>(End);
		return MakeText(Characters, static_cast<size_t>(std::max(Begin, 0)), Last);
	}

	gint CountCharacters(AtkText* Text)
	{
		const FAccessNode* const Node = FindNode(Text);
		return Node ? AtkWords::ToCharacters(Node->Text.ToString(), Node->Text.ToString().Len()) : 0;
	}

	gunichar GetCharacter(AtkText* Text, gint Offset)
	{
		const std::u32string Characters = GetCharacters(Text);
		return Offset >= 0 && static_cast<size_t>(Offset) < Characters.size()
			? static_cast<gunichar>(Characters[static_cast<size_t>(Offset)])
			: 0;
	}

	/** True where a piece of that size begins. */
	bool Begins(const std::u32string& Characters, size_t Index, AtkTextGranularity Size)
	{
		if (Index == 0 || Size == ATK_TEXT_GRANULARITY_CHAR)
		{
			return true;
		}
		const gunichar Before = static_cast<gunichar>(Characters[Index - 1]);
		if (Size == ATK_TEXT_GRANULARITY_WORD)
		{
			// A word takes the blanks and marks behind it along.
			return !g_unichar_isalnum(Before) && g_unichar_isalnum(static_cast<gunichar>(Characters[Index]));
		}
		const bool bSentence = Size == ATK_TEXT_GRANULARITY_SENTENCE && g_unichar_isspace(Before) && Index >= 2 &&
			(Characters[Index - 2] == U'.' || Characters[Index - 2] == U'!' || Characters[Index - 2] == U'?');
		// Lines are those of the text. Where they wrap is a matter of the screen.
		return bSentence || Before == U'\n';
	}

	void FindPiece(const std::u32string& Characters, size_t Offset, AtkTextGranularity Size, size_t& OutBegin, size_t& OutEnd)
	{
		OutBegin = std::min(Offset, Characters.size());
		if (OutBegin == Characters.size() && OutBegin > 0 && Size != ATK_TEXT_GRANULARITY_CHAR && Characters.back() != U'\n')
		{
			// The end belongs to what stands before it, unless that is a line feed: then an empty line follows.
			--OutBegin;
		}
		if (OutBegin == Characters.size())
		{
			OutEnd = OutBegin;
			return;
		}
		while (!Begins(Characters, OutBegin, Size))
		{
			--OutBegin;
		}
		OutEnd = OutBegin + 1;
		while (OutEnd < Characters.size() && !Begins(Characters, OutEnd, Size))
		{
			++OutEnd;
		}
	}

	gchar* GetPiece(const std::u32string& Characters, size_t Begin, size_t End, gint* OutBegin, gint* OutEnd)
	{
		*OutBegin = static_cast<gint>(Begin);
		*OutEnd = static_cast<gint>(End);
		return MakeText(Characters, Begin, End);
	}

	gchar* GetStringAt(AtkText* Text, gint Offset, AtkTextGranularity Size, gint* OutBegin, gint* OutEnd)
	{
		const std::u32string Characters = GetCharacters(Text);
		size_t Begin = 0;
		size_t End = 0;
		FindPiece(Characters, static_cast<size_t>(std::max(Offset, 0)), Size, Begin, End);
		return GetPiece(Characters, Begin, End, OutBegin, OutEnd);
	}

	AtkTextGranularity GetSize(AtkTextBoundary Boundary)
	{
		switch (Boundary)
		{
		case ATK_TEXT_BOUNDARY_WORD_START:
		case ATK_TEXT_BOUNDARY_WORD_END:
			return ATK_TEXT_GRANULARITY_WORD;
		case ATK_TEXT_BOUNDARY_SENTENCE_START:
		case ATK_TEXT_BOUNDARY_SENTENCE_END:
			return ATK_TEXT_GRANULARITY_SENTENCE;
		case ATK_TEXT_BOUNDARY_LINE_START:
		case ATK_TEXT_BOUNDARY_LINE_END:
			return ATK_TEXT_GRANULARITY_LINE;
		case ATK_TEXT_BOUNDARY_CHAR:
			break;
		}
		return ATK_TEXT_GRANULARITY_CHAR;
	}

	gchar* GetTextAt(AtkText* Text, gint Offset, AtkTextBoundary Boundary, gint* OutBegin, gint* OutEnd)
	{
		return GetStringAt(Text, Offset, GetSize(Boundary), OutBegin, OutEnd);
	}

	gchar* GetTextBefore(AtkText* Text, gint Offset, AtkTextBoundary Boundary, gint* OutBegin, gint* OutEnd)
	{
		const std::u32string Characters = GetCharacters(Text);
		size_t Begin = 0;
		size_t End = 0;
		FindPiece(Characters, static_cast<size_t>(std::max(Offset, 0)), GetSize(Boundary), Begin, End);
		if (Begin == 0)
		{
			return GetPiece(Characters, 0, 0, OutBegin, OutEnd);
		}
		FindPiece(Characters, Begin - 1, GetSize(Boundary), Begin, End);
		return GetPiece(Characters, Begin, End, OutBegin, OutEnd);
	}

	gchar* GetTextAfter(AtkText* Text, gint Offset, AtkTextBoundary Boundary, gint* OutBegin, gint* OutEnd)
	{
		const std::u32string Characters = GetCharacters(Text);
		size_t Begin = 0;
		size_t End = 0;
		FindPiece(Characters, static_cast<size_t>(std::max(Offset, 0)), GetSize(Boundary), Begin, End);
		if (End >= Characters.size())
		{
			return GetPiece(Characters, Characters.size(), Characters.size(), OutBegin, OutEnd);
		}
		FindPiece(Characters, End, GetSize(Boundary), Begin, End);
		return GetPiece(Characters, Begin, End, OutBegin, OutEnd);
	}

	gint GetCaret(AtkText* Text)
	{
		const FAccessNode* const Node = FindNode(Text);
		return Node ? AtkWords::ToCharacters(Node->Text.ToString(), Node->Caret) : -1;
	}

	/** What stands where on screen is known of the whole alone. */
	void GetCharacterExtents(AtkText* Text, gint Offset, gint* X, gint* Y, gint* Width, gint* Height, AtkCoordType Type)
	{
		atk_component_get_extents(ATK_COMPONENT(Text), X, Y, Width, Height, Type);
	}

	gint CountSelections(AtkText* Text)
	{
		const FAccessNode* const Node = FindNode(Text);
		return Node && Node->SelectionBegin != Node->SelectionEnd ? 1 : 0;
	}

	gchar* GetSelection(AtkText* Text, gint Number, gint* OutBegin, gint* OutEnd)
	{
		const FAccessNode* const Node = FindNode(Text);
		if (!Node || Number != 0 || Node->SelectionBegin == Node->SelectionEnd)
		{
			*OutBegin = 0;
			*OutEnd = 0;
			return nullptr;
		}
		*OutBegin = AtkWords::ToCharacters(Node->Text.ToString(), Node->SelectionBegin);
		*OutEnd = AtkWords::ToCharacters(Node->Text.ToString(), Node->SelectionEnd);
		return GetText(Text, *OutBegin, *OutEnd);
	}

	bool Select(gpointer Object, gint Begin, gint End)
	{
		const FAccessNode* const Node = FindNode(Object);
		const FString Text = Node ? Node->Text.ToString() : FString();
		if (!Node || !GetTree()->Select(Node->Id, AtkWords::ToUnits(Text, Begin), AtkWords::ToUnits(Text, End)))
		{
			return false;
		}
		FAtkBridge::Get()->Look();
		return true;
	}

	gboolean AddSelection(AtkText* Text, gint Begin, gint End)
	{
		return CountSelections(Text) == 0 && Select(Text, Begin, End);
	}

	gboolean SetSelection(AtkText* Text, gint Number, gint Begin, gint End)
	{
		return Number == 0 && CountSelections(Text) == 1 && Select(Text, Begin, End);
	}

	gboolean RemoveSelection(AtkText* Text, gint Number)
	{
		const gint Caret = GetCaret(Text);
		return Number == 0 && CountSelections(Text) == 1 && Select(Text, Caret, Caret);
	}

	gboolean SetCaret(AtkText* Text, gint Offset)
	{
		return Select(Text, Offset, Offset);
	}

	FString ToText(const char* Bytes, int32 Length)
	{
		std::u16string Units;
		FUTF8ToTCHAR::Append(Units, Bytes, Length);
		return FString(FStringView(Units.data(), static_cast<int32>(Units.size())));
	}

	/** Units. Looks at once: the client may go on with places in the new text. */
	void Replace(gpointer Object, int32 Begin, int32 End, const FString& New)
	{
		const FAccessNode* const Node = FindNode(Object);
		// Refused where nothing can be typed.
		if (Node && GetTree()->ReplaceText(Node->Id, Begin, End, New))
		{
			FAtkBridge::Get()->Look();
		}
	}

	int32 ToUnits(gpointer Object, gint Characters)
	{
		const FAccessNode* const Node = FindNode(Object);
		return Node ? AtkWords::ToUnits(Node->Text.ToString(), Characters) : 0;
	}

	void SetTextContents(AtkEditableText* Text, const gchar* String)
	{
		Replace(Text, 0, MAX_int32, ToText(String, static_cast<int32>(strlen(String))));
	}

	void InsertText(AtkEditableText* Text, const gchar* String, gint Length, gint* Position)
	{
		const int32 Bytes = Length < 0 ? static_cast<int32>(strlen(String)) : std::min(Length, static_cast<int32>(strlen(String)));
		const int32 Place = ToUnits(Text, *Position);
		Replace(Text, Place, Place, ToText(String, Bytes));
		*Position += static_cast<gint>(g_utf8_strlen(String, Bytes));
	}

	void DeleteText(AtkEditableText* Text, gint Begin, gint End)
	{
		Replace(Text, ToUnits(Text, Begin), End < 0 ? MAX_int32 : ToUnits(Text, End), FString());
	}

	void CopyPart(AtkEditableText* Text, gint Begin, gint End, bool bCut)
	{
		const FAccessNode* const Node = FindNode(Text);
		if (Node && GetTree()->CopyText(Node->Id, ToUnits(Text, Begin), End < 0 ? MAX_int32 : ToUnits(Text, End), bCut))
		{
			FAtkBridge::Get()->Look();
		}
	}

	void CopyText(AtkEditableText* Text, gint Begin, gint End)
	{
		CopyPart(Text, Begin, End, false);
	}

	void CutText(AtkEditableText* Text, gint Begin, gint End)
	{
		CopyPart(Text, Begin, End, true);
	}

	void PasteText(AtkEditableText* Text, gint Position)
	{
		const FAccessNode* const Node = FindNode(Text);
		if (Node && GetTree()->PasteText(Node->Id, ToUnits(Text, Position)))
		{
			FAtkBridge::Get()->Look();
		}
	}
}

void AtkObjects::InitText(gpointer Interface, gpointer Data)
{
	AtkTextIface* const Text = static_cast<AtkTextIface*>(Interface);
	Text->get_text = &GetText;
	Text->get_character_count = &CountCharacters;
	Text->get_character_at_offset = &GetCharacter;
	Text->get_string_at_offset = &GetStringAt;
	Text->get_text_at_offset = &GetTextAt;
	Text->get_text_before_offset = &GetTextBefore;
	Text->get_text_after_offset = &GetTextAfter;
	Text->get_caret_offset = &GetCaret;
	Text->set_caret_offset = &SetCaret;
	Text->get_character_extents = &GetCharacterExtents;
	Text->get_n_selections = &CountSelections;
	Text->get_selection = &GetSelection;
	Text->add_selection = &AddSelection;
	Text->set_selection = &SetSelection;
	Text->remove_selection = &RemoveSelection;
}

void AtkObjects::InitEditableText(gpointer Interface, gpointer Data)
{
	AtkEditableTextIface* const Text = static_cast<AtkEditableTextIface*>(Interface);
	Text->set_text_contents = &SetTextContents;
	Text->insert_text = &InsertText;
	Text->delete_text = &DeleteText;
	Text->copy_text = &CopyText;
	Text->cut_text = &CutText;
	Text->paste_text = &PasteText;
}
