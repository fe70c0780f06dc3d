#include "AtkObjects.h"

#include "AtkBridge.h"
#include "AtkWords.h"

#include <cstdio>

// A type says with its interfaces what its objects can do, so there is one type for each combination that occurs; they are made at
// need. Functions get an object from a client at any time, also after its node has gone, and answer with nothing then.

namespace
{
	struct FObject
	{
		AtkObject Base;
		uint32 Id;
	};

	struct FObjectClass
	{
		AtkObjectClass Base;
	};

	const FAccessNode* FindNode(gpointer Object)
	{
		const FAtkBridge* const Bridge = FAtkBridge::Get();
		return Bridge ? Bridge->GetTree().Find(AtkObjects::GetId(Object)) : nullptr;
	}

	/** Kept by the object until it is asked again: clients get texts without owning them. */
	const gchar* Keep(AtkObject* Object, gchar*& Slot, const FString& Text)
	{
		g_free(Slot);
		Slot = g_strdup(AtkWords::ToUtf8(Text).c_str());
		return Slot;
	}

	const gchar* GetName(AtkObject* Object)
	{
		const FAccessNode* const Node = FindNode(Object);
		if (!Node)
		{
			return AtkObjects::GetId(Object) == AtkObjects::ApplicationId ? "Velmora UI" : nullptr;
		}
		return Keep(Object, Object->name, Node->Name);
	}

	const gchar* GetDescription(AtkObject* Object)
	{
		const FAccessNode* const Node = FindNode(Object);
		return Node ? Keep(Object, Object->description, Node->Description) : nullptr;
	}

	AtkObject* GetParent(AtkObject* Object)
	{
		const FAccessNode* const Node = FindNode(Object);
		// Not owned by the caller: the bridge keeps its objects.
		return Node ? FAtkBridge::Get()->GetObject(Node->Parent) : nullptr;
	}

	gint GetChildCount(AtkObject* Object)
	{
		if (AtkObjects::GetId(Object) == AtkObjects::ApplicationId)
		{
			return FAtkBridge::Get() ? 1 : 0;
		}
		const FAccessNode* const Node = FindNode(Object);
		return Node ? Node->Children.Num() : 0;
	}

	AtkObject* RefChild(AtkObject* Object, gint Index)
	{
		FAtkBridge* const Bridge = FAtkBridge::Get();
		if (!Bridge)
		{
			return nullptr;
		}
		AtkObject* Child = nullptr;
		if (AtkObjects::GetId(Object) == AtkObjects::ApplicationId)
		{
			Child = Index == 0 ? Bridge->GetObject(FAccessTree::RootId) : nullptr;
		}
		else if (const FAccessNode* const Node = FindNode(Object); Node && Node->Children.IsValidIndex(Index))
		{
			Child = Bridge->GetObject(Node->Children[Index]);
		}
		if (Child)
		{
			g_object_ref(Child);
		}
		return Child;
	}

	gint GetIndexInParent(AtkObject* Object)
	{
		const FAccessNode* const Node = FindNode(Object);
		if (!Node)
		{
			return -1;
		}
		return Node->Id == FAccessTree::RootId ? 0 : FAtkBridge::Get()->GetTree().GetIndexInParent(*Node);
	}

	AtkRole GetRole(AtkObject* Object)
	{
		const FAccessNode* const Node = FindNode(Object);
		if (AtkObjects::GetId(Object) == AtkObjects::ApplicationId)
		{
			return ATK_ROLE_APPLICATION;
		}
		return Node ? AtkWords::GetRole(*Node) : ATK_ROLE_INVALID;
	}

	AtkStateSet* RefStates(AtkObject* Object)
	{
		AtkStateSet* const States = atk_state_set_new();
		if (const FAccessNode* const Node = FindNode(Object))
		{
			AtkWords::AddStates(*Node, States);
			// A panel works on one of its rows: that one has the focus, and no two have it.
			if (Node->Id != FAtkBridge::Get()->GetTree().GetFocused())
			{
				atk_state_set_remove_state(States, ATK_STATE_FOCUSED);
			}
		}
		else if (AtkObjects::GetId(Object) != AtkObjects::ApplicationId)
		{
			atk_state_set_add_state(States, ATK_STATE_DEFUNCT);
		}
		return States;
	}

	void AddRelation(AtkRelationSet* Relations, uint32 Target, AtkRelationType Type)
	{
		AtkObject* Object = FAtkBridge::Get()->GetObject(Target);
		if (Object)
		{
			AtkRelation* const Relation = atk_relation_new(&Object, 1, Type);
			atk_relation_set_add(Relations, Relation);
			g_object_unref(Relation);
		}
	}

	AtkRelationSet* RefRelations(AtkObject* Object)
	{
		AtkRelationSet* const Relations = atk_relation_set_new();
		const FAccessNode* const Node = FindNode(Object);
		if (!Node)
		{
			return Relations;
		}
		if (Node->LabelledBy != 0)
		{
			AddRelation(Relations, Node->LabelledBy, ATK_RELATION_LABELLED_BY);
		}
		const FAccessTree& Tree = FAtkBridge::Get()->GetTree();
		const FAccessNode* const Parent = Node->Role == EHostRole::Label ? Tree.Find(Node->Parent) : nullptr;
		for (int32 Index = 0; Parent && Index < Parent->Children.Num(); ++Index)
		{
			if (Tree.Find(Parent->Children[Index])->LabelledBy == Node->Id)
			{
				AddRelation(Relations, Parent->Children[Index], ATK_RELATION_LABEL_FOR);
			}
		}
		return Relations;
	}

	AtkAttributeSet* GetAttributes(AtkObject* Object)
	{
		AtkAttribute* const Toolkit = g_new(AtkAttribute, 1);
		Toolkit->name = g_strdup("toolkit");
		Toolkit->value = g_strdup("velmora");
		return g_slist_prepend(nullptr, Toolkit);
	}

	void InitClass(gpointer Class, gpointer Data)
	{
		AtkObjectClass* const Object = static_cast<AtkObjectClass*>(Class);
		Object->get_name = &GetName;
		Object->get_description = &GetDescription;
		Object->get_parent = &GetParent;
		Object->get_n_children = &GetChildCount;
		Object->ref_child = &RefChild;
		Object->get_index_in_parent = &GetIndexInParent;
		Object->get_role = &GetRole;
		Object->ref_state_set = &RefStates;
		Object->ref_relation_set = &RefRelations;
		Object->get_attributes = &GetAttributes;
	}

	GType GetBaseType()
	{
		static const GType Type = []
		{
			GTypeInfo Info{};
			Info.class_size = sizeof(FObjectClass);
			Info.class_init = &InitClass;
			Info.instance_size = sizeof(FObject);
			return g_type_register_static(ATK_TYPE_OBJECT, "VelmoraAccessible", &Info, static_cast<GTypeFlags>(0));
		}();
		return Type;
	}

	enum EInterface : uint32
	{
		NoInterface = 0,
		Component = 1,
		Action = 2,
		Text = 4,
		EditableText = 8,
		Value = 16,
		Selection = 32,
		TopWindow = 64,
	};

	uint32 GetInterfaces(const FAccessNode& Node)
	{
		uint32 Interfaces = Component;
		Interfaces |= Node.Action ? Action : NoInterface;
		Interfaces |= Node.bHasText ? Text : NoInterface;
		Interfaces |= Node.Role == EHostRole::TextBox ? EditableText : NoInterface;
		Interfaces |= Node.Range.IsSet() ? Value : NoInterface;
		Interfaces |= Node.Role == EHostRole::List ? Selection : NoInterface;
		Interfaces |= Node.Role == EHostRole::Window ? TopWindow : NoInterface;
		return Interfaces;
	}

	void AddInterface(GType Type, GType Interface, GInterfaceInitFunc Init)
	{
		const GInterfaceInfo Info{ Init, nullptr, nullptr };
		g_type_add_interface_static(Type, Interface, &Info);
	}

	GType MakeType(const char* Name, uint32 Interfaces)
	{
		GTypeInfo Info{};
		Info.class_size = sizeof(FObjectClass);
		Info.instance_size = sizeof(FObject);
		const GType Type = g_type_register_static(GetBaseType(), Name, &Info, static_cast<GTypeFlags>(0));
		const struct
		{
			uint32 Bit;
			GType Interface;
			GInterfaceInitFunc Init;
		} Rows[] = {
			{ Component, ATK_TYPE_COMPONENT, &AtkObjects::InitComponent },
			{ Action, ATK_TYPE_ACTION, &AtkObjects::InitAction },
			{ Text, ATK_TYPE_TEXT, &AtkObjects::InitText },
			{ EditableText, ATK_TYPE_EDITABLE_TEXT, &AtkObjects::InitEditableText },
			{ Value, ATK_TYPE_VALUE, &AtkObjects::InitValue },
			{ Selection, ATK_TYPE_SELECTION, &AtkObjects::InitSelection },
			// Its signals are all that it has.
			{ TopWindow, ATK_TYPE_WINDOW, nullptr },
		};
		for (const auto& Row : Rows)
		{
			if ((Interfaces & Row.Bit) != 0)
			{
				AddInterface(Type, Row.Interface, Row.Init);
			}
		}
		return Type;
	}
}

uint32 AtkObjects::GetId(gpointer Object)
{
	return static_cast<const FObject*>(Object)->Id;
}

AtkObject* AtkObjects::Make(const FAccessNode* Node)
{
	const uint32 Interfaces = Node ? GetInterfaces(*Node) : 0;
	char Name[64];
	snprintf(Name, sizeof(Name), "VelmoraAccessible%u", Interfaces);
	GType Type = g_type_from_name(Name);
	Type = Type != 0 ? Type : MakeType(Name, Interfaces);
	FObject* const Object = static_cast<FObject*>(g_object_new(Type, nullptr));
	Object->Id = Node ? Node->Id : ApplicationId;
	atk_object_initialize(&Object->Base, nullptr);
	return &Object->Base;
}
