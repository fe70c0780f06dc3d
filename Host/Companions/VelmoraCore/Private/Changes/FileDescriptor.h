#pragma once

#include <unistd.h>
#include <utility>

namespace Velmora
{
	/** Owns an open file and closes it at the end. -1 is none. */
	class FFileDescriptor
	{
	public:
		FFileDescriptor() = default;
		explicit FFileDescriptor(int InHandle)
			: Handle(InHandle)
		{
		}
		FFileDescriptor(FFileDescriptor&& Other) noexcept
			: Handle(std::exchange(Other.Handle, -1))
		{
		}
		FFileDescriptor& operator=(FFileDescriptor&& Other) noexcept
		{
			std::swap(Handle, Other.Handle);
			return *this;
		}
		~FFileDescriptor() { Close(); }

		bool IsOpen() const { return Handle >= 0; }
		int Get() const { return Handle; }

		/** False with errno when the system reports only now that something could not be written. */
		bool Close()
		{
			const int Closing = std::exchange(Handle, -1);
			return Closing < 0 || close(Closing) == 0;
		}

	private:
		int Handle = -1;
	};
}
