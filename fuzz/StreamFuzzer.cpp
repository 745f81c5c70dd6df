//
// StreamFuzzer.cpp
//
// The parser reading a document from a stream whose buffer hands out 1 to
// 7 octets at a time must report the same events, or end with the same
// exception, as the parser reading the same octets from memory.
//
// The reader of a stream refills its buffer every 1024 octets, so most
// inputs would never see a refill. An XML declaration is read octet by
// octet up to its ">" and reaches no handler, so a declaration of chosen
// length in front of the document moves the refill to a chosen octet of
// it. Inputs that bring their own declaration are read as they are.
//


#include "FuzzSupport.h"
#include "Reading.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include <cstdint>
#include <random>


using namespace Ixor::FastInfoset;
using namespace FuzzSupport;
using namespace TestSupport;


namespace {


const std::size_t POSITIONS = 3;


void compare(const std::string& document, std::uint64_t seed)
{
	FastInfosetParser memoryParser;
	configure(memoryParser);
	EventRecorder fromMemory(keptBriefly());
	fromMemory.attachTo(memoryParser);
	Input memory(document, Reading::MEMORY);
	const std::string memoryOutcome = outcomeOf([&] { memory.parse(memoryParser); });

	FastInfosetParser streamParser;
	configure(streamParser);
	EventRecorder fromStream(keptBriefly());
	fromStream.attachTo(streamParser);
	Input stream(document, trickleSizes(seed));
	const std::string streamOutcome = outcomeOf([&] { stream.parse(streamParser); });

	if (memoryOutcome != streamOutcome || fromMemory.digest() != fromStream.digest())
	{
		fail("stream and memory differ (document of " + std::to_string(document.size()) + " octets, seed " + std::to_string(seed) + ")"
			+ "\n memory: " + memoryOutcome + "\n stream: " + streamOutcome + "\n" + differenceOf(fromMemory, fromStream));
	}
}


} // namespace


extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
	const std::string input(reinterpret_cast<const char*>(data), size);
	std::mt19937_64 random(seedOf(data, size));
	compare(input, random());
	if (size == 0 || input.compare(0, 2, "<?") == 0) return 0;

	const std::size_t room = BitStreamReader::BUFFER_SIZE - 3;   // "<?", ">" and at least one octet of the document
	for (std::size_t i = 0; i < POSITIONS; ++i)
	{
		// The first refill falls on octet "at" of the document.
		const std::size_t at = 1 + random() % (size < room ? size : room);
		const std::string declaration = "<?" + std::string(room - at, 'x') + ">";
		compare(declaration + input, random());
	}
	return 0;
}
