#include "AtkBridge.h"
#include "AtkObjects.h"
#include "AtkWords.h"
#include "Async/Async.h"
#include "Framework/Application/SlateApplication.h"

// Places, actions, numbers and selections of objects. What changes something goes through the tree, and so the way that input goes.

namespace
{
	const FAccessTree* GetTree()
	{
		const FAtkBridge* const Bridge = FAtkBridge::Get();
		return Bridge ? &Bridge->GetTree() : nullptr;
	}

	const FAccessNode* FindNode(gpointer Object)
	{
		return GetTree() ? GetTree()->Find(AtkObjects::GetId(Object)) : nullptr;
	}

	/** For the caller to own. */
	AtkObject* Ref(AtkObject* Object)
	{
		if (Object)
		{
			g_object_ref(Object);
		}
		return Object;
	}

	/** Of the window's upper left corner, in the coordinates asked for. */
	FIntPoint GetOrigin(AtkCoordType Type, const FAccessNode& Node)
	{
		if (Type == ATK_XY_SCREEN && FSlateApplication::IsInitialized())
		{
			return FSlateApplication::Get().GetWindow().GetScreenPosition();
		}
		const FAccessNode* const Parent = Type == ATK_XY_PARENT ? GetTree()->Find(Node.Parent) : nullptr;
		return Parent ? FIntPoint(-static_cast<int32>(Parent->Rect.Left), -static_cast<int32>(Parent->Rect.Top)) : FIntPoint(0, 0);
	}

	void GetExtents(AtkComponent* Component, gint* X, gint* Y, gint* Width, gint* Height, AtkCoordType Type)
	{
		const FAccessNode* const Node = FindNode(Component);
		const FIntPoint Origin = Node ? GetOrigin(Type, *Node) : FIntPoint(-1, -1);
		*X = Node ? Origin.X + static_cast<gint>(Node->Rect.Left) : -1;
		*Y = Node ? Origin.Y + static_cast<gint>(Node->Rect.Top) : -1;
		*Width = Node ? static_cast<gint>(Node->Rect.Width()) : -1;
		*Height = Node ? static_cast<gint>(Node->Rect.Height()) : -1;
	}

	AtkObject* RefAtPoint(AtkComponent* Component, gint X, gint Y, AtkCoordType Type)
	{
		const FAccessNode* const Node = FindNode(Component);
		if (!Node)
		{
			return nullptr;
		}
		const FIntPoint Origin = GetOrigin(Type, *Node);
		return Ref(FAtkBridge::Get()->GetObject(GetTree()->FindAt(FVector2D(X - Origin.X, Y - Origin.Y))));
	}

	gboolean GrabFocus(AtkComponent* Component)
	{
		return GetTree() && GetTree()->SetFocus(AtkObjects::GetId(Component));
	}

	AtkLayer GetLayer(AtkComponent* Component)
	{
		const FAccessNode* const Node = FindNode(Component);
		return Node && Node->Role == EHostRole::Window ? ATK_LAYER_WINDOW : ATK_LAYER_WIDGET;
	}

	/** Not within the client's call: an action may open a dialog, which the client wants to answer by further calls. */
	bool DoSoon(uint32 Id)
	{
		if (!GetTree() || !GetTree()->HasAction(Id))
		{
			return false;
		}
		AsyncTask(ENamedThreads::GameThread,
			[Id]
			{
				if (GetTree())
				{
					(void)GetTree()->DoAction(Id);
				}
			});
		return true;
	}

	gboolean DoAction(AtkAction* Action, gint Index)
	{
		return Index == 0 && DoSoon(AtkObjects::GetId(Action));
	}

	gint CountActions(AtkAction* Action)
	{
		const FAccessNode* const Node = FindNode(Action);
		return Node && Node->Action ? 1 : 0;
	}

	const gchar* GetActionName(AtkAction* Action, gint Index)
	{
		const FAccessNode* const Node = FindNode(Action);
		return Node && Index == 0 ? Node->Action : nullptr;
	}

	void GetValueAndText(AtkValue* Value, gdouble* Number, gchar** Text)
	{
		const FAccessNode* const Node = FindNode(Value);
		*Number = Node && Node->Range.IsSet() ? Node->Range->Value : 0.0;
		if (Text)
		{
			*Text = nullptr;
		}
	}

	AtkRange* GetRange(AtkValue* Value)
	{
		const FAccessNode* const Node = FindNode(Value);
		return Node && Node->Range.IsSet() ? atk_range_new(Node->Range->Minimum, Node->Range->Maximum, nullptr) : nullptr;
	}

	gdouble GetIncrement(AtkValue* Value)
	{
		return 0.0;
	}

	void SetValue(AtkValue* Value, const gdouble Number)
	{
		if (GetTree())
		{
			(void)GetTree()->SetValue(AtkObjects::GetId(Value), Number);
		}
	}

	const FAccessNode* FindChild(AtkSelection* List, gint Index)
	{
		const FAccessNode* const Node = FindNode(List);
		return Node && Node->Children.IsValidIndex(Index) ? GetTree()->Find(Node->Children[Index]) : nullptr;
	}

	bool IsSelected(const FAccessNode& Node)
	{
		return (Node.States & EHostAccessState::Selected) != 0;
	}

	gint CountSelected(AtkSelection* List)
	{
		gint Count = 0;
		for (gint Index = 0; const FAccessNode* const Child = FindChild(List, Index); ++Index)
		{
			Count += IsSelected(*Child) ? 1 : 0;
		}
		return Count;
	}

	AtkObject* RefSelected(AtkSelection* List, gint Wanted)
	{
		gint Left = Wanted;
		for (gint Index = 0; const FAccessNode* const Child = FindChild(List, Index); ++Index)
		{
			if (IsSelected(*Child) && Left-- == 0)
			{
				return Ref(FAtkBridge::Get()->GetObject(Child->Id));
			}
		}
		return nullptr;
	}

	gboolean IsChildSelected(AtkSelection* List, gint Index)
	{
		const FAccessNode* const Child = FindChild(List, Index);
		return Child && IsSelected(*Child);
	}

	gboolean SelectChild(AtkSelection* List, gint Index)
	{
		const FAccessNode* const Child = FindChild(List, Index);
		return Child && DoSoon(Child->Id);
	}
}

void AtkObjects::InitComponent(gpointer Interface, gpointer Data)
{
	AtkComponentIface* const Component = static_cast<AtkComponentIface*>(Interface);
	Component->get_extents = &GetExtents;
	Component->ref_accessible_at_point = &RefAtPoint;
	Component->grab_focus = &GrabFocus;
	Component->get_layer = &GetLayer;
}

void AtkObjects::InitAction(gpointer Interface, gpointer Data)
{
	AtkActionIface* const Action = static_cast<AtkActionIface*>(Interface);
	Action->do_action = &DoAction;
	Action->get_n_actions = &CountActions;
	Action->get_name = &GetActionName;
	Action->get_localized_name = &GetActionName;
}

void AtkObjects::InitValue(gpointer Interface, gpointer Data)
{
	AtkValueIface* const Value = static_cast<AtkValueIface*>(Interface);
	Value->get_value_and_text = &GetValueAndText;
	Value->get_range = &GetRange;
	Value->get_increment = &GetIncrement;
	Value->set_value = &SetValue;
}

void AtkObjects::InitSelection(gpointer Interface, gpointer Data)
{
	AtkSelectionIface* const Selection = static_cast<AtkSelectionIface*>(Interface);
	Selection->get_selection_count = &CountSelected;
	Selection->ref_selection = &RefSelected;
	Selection->is_child_selected = &IsChildSelected;
	Selection->add_selection = &SelectChild;
}
