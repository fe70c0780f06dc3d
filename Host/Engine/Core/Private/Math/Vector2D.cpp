#include "Math/Vector2D.h"

#include "Containers/UnrealString.h"

namespace UE::Math
{
	template <typename T>
	FString TVector2<T>::ToString() const
	{
		return FString::Printf(TEXT("X=%3.3f Y=%3.3f"), X, Y);
	}
	template CORE_API FString TVector2<float>::ToString() const;
	template CORE_API FString TVector2<double>::ToString() const;
}
