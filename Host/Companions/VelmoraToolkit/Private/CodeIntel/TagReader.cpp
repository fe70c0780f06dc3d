#include "CodeIntel/TagReader.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace Velmora::CodeIntel
{
	namespace
	{
		/** Names longer than this are generated data. In bytes. */
		constexpr size_t MaxNameBytes = 1000;

		struct FTagHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, FTagHandler>
		{
			FTag Tag;
			std::string Type;
			int Depth = 0;
			std::string* Text = nullptr;
			bool bIsLine = false;

			bool Default()
			{
				Text = nullptr;
				bIsLine = false;
				return true;
			}
			bool StartObject()
			{
				++Depth;
				return Default();
			}
			bool EndObject(rapidjson::SizeType)
			{
				--Depth;
				return Default();
			}
			bool StartArray() { return StartObject(); }
			bool EndArray(rapidjson::SizeType Count) { return EndObject(Count); }
			bool Key(const char* Word, rapidjson::SizeType Length, bool)
			{
				const std::string_view Name(Word, Length);
				Default();
				if (Depth == 1)
				{
					bIsLine = Name == "line";
					Text = Name == "_type"	  ? &Type
						: Name == "name"	  ? &Tag.Name
						: Name == "path"	  ? &Tag.Path
						: Name == "kind"	  ? &Tag.Kind
						: Name == "scope"	  ? &Tag.Scope
						: Name == "scopeKind" ? &Tag.ScopeKind
											  : nullptr;
				}
				return true;
			}
			bool String(const char* Word, rapidjson::SizeType Length, bool)
			{
				if (Text)
				{
					Text->assign(Word, Length);
				}
				return Default();
			}
			bool Uint(unsigned Value)
			{
				if (bIsLine)
				{
					Tag.Line = static_cast<int>(std::min<unsigned>(Value, INT_MAX));
				}
				return Default();
			}
			bool Int(int Value) { return Uint(static_cast<unsigned>(std::max(Value, 0))); }
		};
	}

	FTagReader::FTagReader(std::function<void(FTag&&)> InTake)
		: Take(std::move(InTake))
	{
	}

	void FTagReader::Add(std::string_view Piece)
	{
		for (size_t End = Piece.find('\n'); End != std::string_view::npos; End = Piece.find('\n'))
		{
			if (Rest.empty())
			{
				ReadLine(Piece.substr(0, End));
			}
			else
			{
				Rest.append(Piece.substr(0, End));
				ReadLine(Rest);
				Rest.clear();
			}
			Piece.remove_prefix(End + 1);
		}
		Rest.append(Piece);
	}

	void FTagReader::ReadLine(std::string_view Text)
	{
		FTagHandler Handler;
		rapidjson::MemoryStream Stream(Text.data(), Text.size());
		rapidjson::Reader Reader;
		const bool bIsRead = !Reader.Parse<rapidjson::kParseIterativeFlag>(Stream, Handler).IsError();
		bHasGarbage = bHasGarbage || !bIsRead || Handler.Type.empty();
		if (bIsRead && Handler.Type == "tag" && !Handler.Tag.Name.empty() && Handler.Tag.Name.size() <= MaxNameBytes &&
			Handler.Tag.Line > 0)
		{
			Take(std::move(Handler.Tag));
		}
	}
}
