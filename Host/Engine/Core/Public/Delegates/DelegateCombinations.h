#pragma once

// One line per number of parameters. May stand in class scope. A parameter type with a comma needs an alias.

#define DECLARE_DELEGATE(DelegateName) using DelegateName = TDelegate<void()>;
#define DECLARE_DELEGATE_OneParam(DelegateName, P1) using DelegateName = TDelegate<void(P1)>;
#define DECLARE_DELEGATE_TwoParams(DelegateName, P1, P2) using DelegateName = TDelegate<void(P1, P2)>;
#define DECLARE_DELEGATE_ThreeParams(DelegateName, P1, P2, P3) using DelegateName = TDelegate<void(P1, P2, P3)>;
#define DECLARE_DELEGATE_FourParams(DelegateName, P1, P2, P3, P4) using DelegateName = TDelegate<void(P1, P2, P3, P4)>;
#define DECLARE_DELEGATE_FiveParams(DelegateName, P1, P2, P3, P4, P5) using DelegateName = TDelegate<void(P1, P2, P3, P4, P5)>;
#define DECLARE_DELEGATE_SixParams(DelegateName, P1, P2, P3, P4, P5, P6) using DelegateName = TDelegate<void(P1, P2, P3, P4, P5, P6)>;

#define DECLARE_DELEGATE_RetVal(ReturnType, DelegateName) using DelegateName = TDelegate<ReturnType()>;
#define DECLARE_DELEGATE_RetVal_OneParam(ReturnType, DelegateName, P1) using DelegateName = TDelegate<ReturnType(P1)>;
#define DECLARE_DELEGATE_RetVal_TwoParams(ReturnType, DelegateName, P1, P2) using DelegateName = TDelegate<ReturnType(P1, P2)>;
#define DECLARE_DELEGATE_RetVal_ThreeParams(ReturnType, DelegateName, P1, P2, P3) using DelegateName = TDelegate<ReturnType(P1, P2, P3)>;
#define DECLARE_DELEGATE_RetVal_FourParams(ReturnType, DelegateName, P1, P2, P3, P4) \
	using DelegateName = TDelegate<ReturnType(P1, P2, P3, P4)>;
#define DECLARE_DELEGATE_RetVal_FiveParams(ReturnType, DelegateName, P1, P2, P3, P4, P5) \
	using DelegateName = TDelegate<ReturnType(P1, P2, P3, P4, P5)>;
#define DECLARE_DELEGATE_RetVal_SixParams(ReturnType, DelegateName, P1, P2, P3, P4, P5, P6) \
	using DelegateName = TDelegate<ReturnType(P1, P2, P3, P4, P5, P6)>;

#define DECLARE_MULTICAST_DELEGATE(DelegateName) using DelegateName = TMulticastDelegate<void()>;
#define DECLARE_MULTICAST_DELEGATE_OneParam(DelegateName, P1) using DelegateName = TMulticastDelegate<void(P1)>;
#define DECLARE_MULTICAST_DELEGATE_TwoParams(DelegateName, P1, P2) using DelegateName = TMulticastDelegate<void(P1, P2)>;
#define DECLARE_MULTICAST_DELEGATE_ThreeParams(DelegateName, P1, P2, P3) using DelegateName = TMulticastDelegate<void(P1, P2, P3)>;
#define DECLARE_MULTICAST_DELEGATE_FourParams(DelegateName, P1, P2, P3, P4) using DelegateName = TMulticastDelegate<void(P1, P2, P3, P4)>;
#define DECLARE_MULTICAST_DELEGATE_FiveParams(DelegateName, P1, P2, P3, P4, P5) \
	using DelegateName = TMulticastDelegate<void(P1, P2, P3, P4, P5)>;
#define DECLARE_MULTICAST_DELEGATE_SixParams(DelegateName, P1, P2, P3, P4, P5, P6) \
	using DelegateName = TMulticastDelegate<void(P1, P2, P3, P4, P5, P6)>;

/** A multicast delegate that only its owner broadcasts and clears. */
#define UE_DECLARE_EVENT(OwningType, EventName, Signature) \
	class EventName : public TMulticastDelegate<Signature> \
	{ \
		friend OwningType; \
		using TMulticastDelegate<Signature>::Broadcast; \
		using TMulticastDelegate<Signature>::Clear; \
	};

#define DECLARE_EVENT(OwningType, EventName) UE_DECLARE_EVENT(OwningType, EventName, void())
#define DECLARE_EVENT_OneParam(OwningType, EventName, P1) UE_DECLARE_EVENT(OwningType, EventName, void(P1))
#define DECLARE_EVENT_TwoParams(OwningType, EventName, P1, P2) UE_DECLARE_EVENT(OwningType, EventName, void(P1, P2))
#define DECLARE_EVENT_ThreeParams(OwningType, EventName, P1, P2, P3) UE_DECLARE_EVENT(OwningType, EventName, void(P1, P2, P3))
#define DECLARE_EVENT_FourParams(OwningType, EventName, P1, P2, P3, P4) UE_DECLARE_EVENT(OwningType, EventName, void(P1, P2, P3, P4))
#define DECLARE_EVENT_FiveParams(OwningType, EventName, P1, P2, P3, P4, P5) \
	UE_DECLARE_EVENT(OwningType, EventName, void(P1, P2, P3, P4, P5))
#define DECLARE_EVENT_SixParams(OwningType, EventName, P1, P2, P3, P4, P5, P6) \
	UE_DECLARE_EVENT(OwningType, EventName, void(P1, P2, P3, P4, P5, P6))
