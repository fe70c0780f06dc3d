#pragma once

#include "Host/AccessTree.h"

#include <atk/atk.h>

/** Makes the objects that clients hold. Each knows an id and asks FAtkBridge for all else. */
namespace AtkObjects
{
	/** The application, above the window. */
	constexpr uint32 ApplicationId = 0;

	/** With the interfaces that a node of that kind has; the caller owns a reference. Null makes the application. */
	AtkObject* Make(const FAccessNode* Node);
	uint32 GetId(gpointer Object);

	/** Fill in the functions of an interface; for the registration of types. */
	void InitAction(gpointer Interface, gpointer Data);
	void InitComponent(gpointer Interface, gpointer Data);
	void InitEditableText(gpointer Interface, gpointer Data);
	void InitSelection(gpointer Interface, gpointer Data);
	void InitText(gpointer Interface, gpointer Data);
	void InitValue(gpointer Interface, gpointer Data);
}
