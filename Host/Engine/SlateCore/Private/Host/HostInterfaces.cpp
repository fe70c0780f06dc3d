#include "Host/HostWindow.h"
#include "Host/TextShaper.h"
#include "Widgets/IToolTip.h"

namespace
{
	TSharedPtr<ITextShaper>& GetShaperSlot()
	{
		static TSharedPtr<ITextShaper> Shaper;
		return Shaper;
	}
}

FGlyphRun::~FGlyphRun() = default;
ITextParagraph::~ITextParagraph() = default;
ITextShaper::~ITextShaper() = default;
IHostMessageHandler::~IHostMessageHandler() = default;
IHostWindow::~IHostWindow() = default;
IToolTip::~IToolTip() = default;

ITextShaper& ITextShaper::Get()
{
	checkf(GetShaperSlot().IsValid(), TEXT("No text shaper was installed"));
	return *GetShaperSlot();
}

bool ITextShaper::IsSet()
{
	return GetShaperSlot().IsValid();
}

void ITextShaper::Set(TSharedPtr<ITextShaper> Shaper)
{
	GetShaperSlot() = MoveTemp(Shaper);
}
