#include "CodeIntel/TagReader.h"
#include "Fuzz/FuzzInput.h"

#include <algorithm>
#include <string>
#include <vector>

namespace
{
	std::vector<std::string> Read(std::string_view Bytes, size_t PieceSize)
	{
		std::vector<std::string> Tags;
		Velmora::CodeIntel::FTagReader Reader(
			[&Tags](Velmora::CodeIntel::FTag&& Tag)
			{
				Tags.push_back(Tag.Name + "\n" + Tag.Path + "\n" + Tag.Kind + "\n" + Tag.Scope + "\n" + Tag.ScopeKind + "\n" +
					std::to_string(Tag.Line));
			});
		for (; !Bytes.empty(); Bytes.remove_prefix(std::min(PieceSize, Bytes.size())))
		{
			Reader.Add(Bytes.substr(0, PieceSize));
		}
		Tags.push_back(Reader.HasGarbage() ? "garbage" : "clean");
		return Tags;
	}
}

// The answer of the symbol extractor says the same in one piece and in pieces of any size.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	CheckPieces(FFuzzInput(Data, Size), Read);
	return 0;
}
