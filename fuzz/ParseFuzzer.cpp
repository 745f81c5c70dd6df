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


void expectSame(const char* what, const std::string& expected, const std::string& actual, const EventLog* pExpected = nullptr, const EventLog* pActual = nullptr)
{
	if (expected == actual) return;
	std::string report = std::string(what) + "\n expected: " + expected + "\n actual:   " + actual;
	if (pExpected && pActual) report += "\n expected events:\n" + pExpected->text() + " actual events:\n" + pActual->text();
	fail(report);
}


} // namespace


extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
	const char* pData = reinterpret_cast<const char*>(data);

	// The same document twice: the second parse must not see the first.
	FastInfosetParser reused;
	configure(reused);
	TypedRecorder first;
	first.attachTo(reused);
	const std::string firstOutcome = outcomeOf([&] { reused.parseMemoryNP(pData, size); });
	TypedRecorder second;
	second.attachTo(reused);
	const std::string secondOutcome = outcomeOf([&] { reused.parseMemoryNP(pData, size); });
	expectSame("a reused parser ends differently", firstOutcome, secondOutcome);
	expectSame("a reused parser reports different events", first.log.digest(), second.log.digest(), &first.log, &second.log);

	// Typed values as text, and elements without qualified names.
	FastInfosetParser plainParser;
	configure(plainParser);
	plainParser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACE_PREFIXES, false);
	PlainRecorder plain;
	plain.attachTo(plainParser);
	expectSame("the plain handler ends differently", firstOutcome, outcomeOf([&] { plainParser.parseMemoryNP(pData, size); }));

	FastInfosetParser bare;
	configure(bare);
	expectSame("the parser without handlers ends differently", firstOutcome, outcomeOf([&] { bare.parseMemoryNP(pData, size); }));

	// Tables that look strings up by value instead of appending them change
	// the meaning of indexes, so only the absence of crashes counts. Their
	// tables are costly to build: one input in eight tries them.
	if (hashOf(data, size) % 8 == 0)
	{
		for (DocumentVocabulary::VocabularyImpl impl: {DocumentVocabulary::VOC_MAP, DocumentVocabulary::VOC_HASH})
		{
			FastInfosetParser other(impl);
			configure(other);
			TypedRecorder recorder;
			recorder.attachTo(other);
			outcomeOf([&] { other.parseMemoryNP(pData, size); });
		}
	}
	return 0;
}
