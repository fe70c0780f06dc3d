#include "Text/JsonText.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "Text/Utf8Text.h"

namespace Velmora::JsonText
{
	FString MakeObject(const std::vector<std::pair<std::string_view, std::string>>& Fields)
	{
		rapidjson::StringBuffer Buffer;
		rapidjson::Writer<rapidjson::StringBuffer> Writer(Buffer);
		Writer.StartObject();
		for (const auto& [Name, Value] : Fields)
		{
			Writer.Key(Name.data(), static_cast<rapidjson::SizeType>(Name.size()));
			const std::string Text = Utf8Text::Sanitise(Value);
			Writer.String(Text.data(), static_cast<rapidjson::SizeType>(Text.size()));
		}
		Writer.EndObject();
		return Utf8Text::ToString(std::string_view(Buffer.GetString(), Buffer.GetSize()));
	}
}
