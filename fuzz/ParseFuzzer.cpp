//
// ParseFuzzer.cpp
//
// The whole parser over a memory block, with a typed and a plain recording
// handler and with no handler at all. All must end alike (normal return
// or the same exception), and a parser that read a document before must
// report the same events for the next one as a fresh parser.
//


#include "FuzzSupport.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include <cstdint>


using namespace Ixor::FastInfoset;
using namespace FuzzSupport;


namespace {


void expectSame(const char* what, const std::string& expected, const std::string& actual)
{
	if (expected != actual) fail(std::string(what) + "\n expected: " + expected + "\n actual:   " + actual);
}


void expectSameEvents(const char* what, const EventRecorder& expected, const EventRecorder& actual)
{
	if (expected.digest() != actual.digest()) fail(std::string(what) + "\n" + differenceOf(expected, actual));
}


} // namespace


extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
	const char* pData = reinterpret_cast<const char*>(data);

	// The same document twice: the second parse must not see the first.
	FastInfosetParser reused;
	configure(reused);
	EventRecorder first(keptBriefly());
	first.attachTo(reused);
	const std::string firstOutcome = outcomeOf([&] { reused.parseMemoryNP(pData, size); });
	EventRecorder second(keptBriefly());
	second.attachTo(reused);
	const std::string secondOutcome = outcomeOf([&] { reused.parseMemoryNP(pData, size); });
	expectSame("a reused parser ends differently", firstOutcome, secondOutcome);
	expectSameEvents("a reused parser reports different events", first, second);

	// Typed values as text, and elements without qualified names.
	FastInfosetParser plainParser;
	configure(plainParser);
	plainParser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACE_PREFIXES, false);
	EventRecorder plain(keptBriefly());
	plain.attachPlainTo(plainParser);
	expectSame("the plain handler ends differently", firstOutcome, outcomeOf([&] { plainParser.parseMemoryNP(pData, size); }));

	FastInfosetParser bare;
	configure(bare);
	expectSame("the parser without handlers ends differently", firstOutcome, outcomeOf([&] { bare.parseMemoryNP(pData, size); }));

	// Tables that look strings up by value instead of appending them change
	// the meaning of indexes, so only the absence of crashes counts. Their
	// tables are costly to build: one input in eight tries them.
	if (seedOf(data, size) % 8 == 0)
	{
		for (DocumentVocabulary::VocabularyImpl impl: {DocumentVocabulary::VOC_MAP, DocumentVocabulary::VOC_HASH})
		{
			FastInfosetParser other(impl);
			configure(other);
			EventRecorder recorder(keptBriefly());
			recorder.attachTo(other);
			outcomeOf([&] { other.parseMemoryNP(pData, size); });
		}
	}
	return 0;
}
