#include "Host/AgentSeam.h"

#include <mutex>

namespace Velmora
{
	namespace
	{
		struct FSeamSlot
		{
			std::mutex Mutex;
			std::shared_ptr<IAgentSeam> Seam;
		};

		FSeamSlot& GetSeamSlot()
		{
			static FSeamSlot Slot;
			return Slot;
		}
	}

	void FAgentSeam::Set(std::shared_ptr<IAgentSeam> Seam)
	{
		FSeamSlot& Slot = GetSeamSlot();
		// The former one is let go of outside the lock.
		const std::lock_guard<std::mutex> Lock(Slot.Mutex);
		Slot.Seam.swap(Seam);
	}

	std::shared_ptr<IAgentSeam> FAgentSeam::Get()
	{
		FSeamSlot& Slot = GetSeamSlot();
		const std::lock_guard<std::mutex> Lock(Slot.Mutex);
		return Slot.Seam;
	}
}
