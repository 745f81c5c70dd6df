//
// TypedValueFuzzer.cpp
//
// The decoders of the encoding algorithms. The first input octet picks the
// algorithm index (as the parser passes it on, negative and unknown ones
// included), the second the bit position of the value; the rest is the
// value's length and octets.
//
// A value decoded from memory and from a trickling stream must be the
// same; its text form must be what the algorithm's text decoder reads from
// the same octets; written again it must decode to the same typed values
// and text; and a text form that the algorithm accepts must encode to a
// value with that same text form.
//
// One difference is deliberate: a boolean value string without values
// reads as empty text, but is refused as a value, as a value built from
// no booleans is.
//


#include "FuzzSupport.h"
#include "Reading.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/BoolEncoding.h"
#include "Ixor/FastInfoset/CDataEncoding.h"
#include "Ixor/FastInfoset/DWordEncoding.h"
#include "Ixor/FastInfoset/DecodingAlgorithm.h"
#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "Ixor/FastInfoset/FloatEncoding.h"
#include "Ixor/FastInfoset/HexEncoding.h"
#include "Ixor/FastInfoset/IntEncoding.h"
#include "Ixor/FastInfoset/LongEncoding.h"
#include "Ixor/FastInfoset/ShortEncoding.h"
#include "Ixor/FastInfoset/UUIDEncoding.h"
#include "Poco/SAX/DefaultHandler.h"
#include <cstdint>
#include <functional>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace FuzzSupport;
using namespace TestSupport;


namespace {


typedef void (*TextDecoder)(BitStreamReader&, std::string&);


const TextDecoder TEXT_DECODERS[] =
{
	nullptr,
	HexEncoding::decode,
	DWordEncoding::decode,
	ShortEncoding::decode,
	IntEncoding::decode,
	LongEncoding::decode,
	BoolEncoding::decode,
	FloatEncoding::decode,
	DoubleEncoding::decode,
	UUIDEncoding::decode,
	CDataEncoding::decode
};


class TextCapture: public Ixor::XML::DefaultHandler
{
public:
	std::string text;
	int calls = 0;

	void characters(const char ch[], int start, int length) override
	{
		text.append(ch + start, static_cast<std::size_t>(length));
		++calls;
	}
};


struct Value
{
	std::string outcome;
	std::string text;
	std::string typed;
	Ixor::AutoPtr<Encoding> pEncoding;
};


Value decode(const DecodingAlgorithm& decodings, int algorithm, BitStreamReader& reader, int start)
{
	Value value;
	value.outcome = outcomeOf([&]
	{
		reader.skip(start);
		value.pEncoding = decodings.read(algorithm, reader);
	});
	if (value.outcome != "ok") return value;
	if (!value.pEncoding) fail("a decoder returned no value");
	TextCapture capture;
	value.pEncoding->handle(static_cast<Ixor::XML::ContentHandler*>(&capture));
	if (capture.calls != 1) fail("the text form came in " + std::to_string(capture.calls) + " calls");
	value.text = capture.text;
	EventRecorder typed(keptBriefly());
	value.pEncoding->handle(static_cast<FISContentHandler*>(&typed));
	value.typed = typed.digest();
	return value;
}


std::string writtenAgain(const std::string& head, int start, const std::function<void(BitStreamWriter&)>& write)
	/// The first start bits of head, then what write() writes.
{
	std::ostringstream out;
	{
		BitStreamWriter writer(out, false);
		if (start > 0) writer.write(static_cast<unsigned int>(static_cast<unsigned char>(head[0]) >> (8 - start)), start);
		write(writer);
		writer.complete();
	}
	return out.str();
}


} // namespace


extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
	if (size < 3) return 0;
	const int algorithm = static_cast<signed char>(data[0]);
	const int start = data[1] & 7;
	const std::string octets(reinterpret_cast<const char*>(data) + 2, size - 2);
	static const DecodingAlgorithm decodings;

	BitStreamReader memory(octets.data(), octets.size());
	const Value value = decode(decodings, algorithm, memory, start);

	Input stream(octets, trickleSizes(seedOf(data, size)));
	const Value fromStream = decode(decodings, algorithm, stream.reader(), start);
	if (value.outcome != fromStream.outcome || value.text != fromStream.text || value.typed != fromStream.typed)
		fail("memory and stream differ\n memory: " + value.outcome + "\n stream: " + fromStream.outcome);

	// The text decoders read the same octets without building a value.
	if (algorithm >= 1 && algorithm <= 10)
	{
		BitStreamReader again(octets.data(), octets.size());
		std::string text;
		const std::string outcome = outcomeOf([&]
		{
			again.skip(start);
			TEXT_DECODERS[algorithm](again, text);
		});
		const bool noBooleans = algorithm == 6 && outcome == "ok" && text.empty() && value.outcome.find("Illegal (empty) data for BoolEncoding") != std::string::npos;
		if ((outcome == "ok") != (value.outcome == "ok") && !noBooleans)
			fail("the value and the text decoder end differently\n value: " + value.outcome + "\n text:  " + outcome);
		if (outcome == "ok" && text != value.text)
			fail("the text decoder reads \"" + text.substr(0, 200) + "\", the value's text is \"" + value.text.substr(0, 200) + "\"");
	}
	if (value.outcome != "ok") return 0;

	// Written again, the value decodes to itself.
	const std::string rewritten = writtenAgain(octets, start, [&](BitStreamWriter& w) { value.pEncoding->write(w); });
	BitStreamReader reread(rewritten.data(), rewritten.size());
	const Value copy = decode(decodings, algorithm, reread, start);
	if (copy.outcome != "ok" || copy.text != value.text || copy.typed != value.typed)
		fail("written again, the value decodes differently (" + copy.outcome + ")\n before: " + value.text.substr(0, 200) + "\n after:  " + copy.text.substr(0, 200));

	// A text form that the algorithm accepts encodes to the same text.
	if (value.pEncoding->checkMethod()(value.text) > 0)
	{
		std::string encoded;
		const std::string outcome = outcomeOf([&]
		{
			encoded = writtenAgain(octets, start, [&](BitStreamWriter& w) { value.pEncoding->encodeMethod()(w, value.text); });
		});
		if (outcome != "ok") fail("the algorithm accepts the text \"" + value.text.substr(0, 200) + "\" but cannot encode it: " + outcome);
		BitStreamReader fromText(encoded.data(), encoded.size());
		const Value parsed = decode(decodings, algorithm, fromText, start);
		if (parsed.outcome != "ok" || parsed.text != value.text)
			fail("the text \"" + value.text.substr(0, 200) + "\" encodes to a value with the text \"" + parsed.text.substr(0, 200) + "\" (" + parsed.outcome + ")");
	}
	return 0;
}
