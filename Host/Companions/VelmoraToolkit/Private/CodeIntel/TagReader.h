#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace Velmora::CodeIntel
{
	/** One symbol as the extractor tells it, one JSON object a line. Empty where it says nothing. */
	struct FTag
	{
		std::string Name;
		std::string Path;
		std::string Kind;
		std::string Scope;
		std::string ScopeKind;
		int Line = 0;
	};

	/** Cuts the extractor's output into lines and reads them. What is no tag is passed over, what is no answer at all is counted. */
	class FTagReader
	{
	public:
		explicit FTagReader(std::function<void(FTag&&)> InTake);

		/** A piece of output, cut anywhere. */
		void Add(std::string_view Piece);

		/** Something came that the extractor does not write, or the last line was cut off. */
		bool HasGarbage() const { return bHasGarbage || !Rest.empty(); }

	private:
		void ReadLine(std::string_view Text);

		const std::function<void(FTag&&)> Take;
		std::string Rest;
		bool bHasGarbage = false;
	};
}
