//
// RoundTripFuzzer.cpp
//
// Octets -> parse -> FastInfosetWriter -> parse: when the first parse
// succeeds and the writer takes all its events, the second parse must
// succeed and report the same events.
//
// The writer refuses some event streams by design, with an exception of
// the library: names and targets that are empty (index 0 of a table), PIs
// with empty targets, and so on. Such inputs are skipped, and so are those
// with an element whose local name and namespace are empty: the writer
// takes such an element's qualified name as its name, as it must for the
// events of an XML parser without namespace support. The events are
// compared without what the writer changes on purpose, which the roundTrip
// option of the test kit's EventRecorder lists. The writer has map tables:
// hash tables are full after a few dozen distinct short strings of one
// kind.
//


#include "FuzzSupport.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include <cstdint>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace FuzzSupport;


namespace {


EventRecorder::Options roundTrip()
{
	EventRecorder::Options options;
	options.roundTrip = true;
	return keptBriefly(options);
}


class Forwarder: public EventRecorder
	/// Logs each event and hands it to the writer, until the writer refuses
	/// one.
{
public:
	explicit Forwarder(FastInfosetWriter& writer):
		EventRecorder(roundTrip()),
		_writer(writer)
	{
	}

	std::string refusal;

	void startDocument() override { EventRecorder::startDocument(); forward([&] { _writer.startDocument(); }); }
	void endDocument() override { EventRecorder::endDocument(); forward([&] { _writer.endDocument(); }); }

	void startElement(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes) override
	{
		EventRecorder::startElement(uri, localName, qname, attributes);
		if (uri.empty() && localName.empty() && refusal.empty()) refusal = "an element without name";
		forward([&] { _writer.startElement(uri, localName, qname, attributes); });
	}

	void endElement(const std::string& uri, const std::string& localName, const std::string& qname) override
	{
		EventRecorder::endElement(uri, localName, qname);
		forward([&] { _writer.endElement(uri, localName, qname); });
	}

	void characters(const char ch[], int start, int length) override
	{
		EventRecorder::characters(ch, start, length);
		forward([&] { _writer.characters(ch, start, length); });
	}

	void processingInstruction(const std::string& target, const std::string& data) override
	{
		EventRecorder::processingInstruction(target, data);
		forward([&] { _writer.processingInstruction(target, data); });
	}

	void startPrefixMapping(const std::string& prefix, const std::string& uri) override
	{
		EventRecorder::startPrefixMapping(prefix, uri);
		forward([&] { _writer.startPrefixMapping(prefix, uri); });
	}

	void endPrefixMapping(const std::string& prefix) override
	{
		EventRecorder::endPrefixMapping(prefix);
		forward([&] { _writer.endPrefixMapping(prefix); });
	}

	void startDTD(const std::string& name, const std::string& publicId, const std::string& systemId) override
	{
		EventRecorder::startDTD(name, publicId, systemId);
		forward([&] { _writer.startDTD(name, publicId, systemId); });
	}

	void endDTD() override { EventRecorder::endDTD(); forward([&] { _writer.endDTD(); }); }
	void startCDATA() override { EventRecorder::startCDATA(); forward([&] { _writer.startCDATA(); }); }
	void endCDATA() override { EventRecorder::endCDATA(); forward([&] { _writer.endCDATA(); }); }

	void comment(const char ch[], int start, int length) override
	{
		EventRecorder::comment(ch, start, length);
		forward([&] { _writer.comment(ch, start, length); });
	}

	void notationDecl(const std::string& name, const std::string* publicId, const std::string* systemId) override
	{
		EventRecorder::notationDecl(name, publicId, systemId);
		forward([&] { _writer.notationDecl(name, publicId, systemId); });
	}

	void unparsedEntityDecl(const std::string& name, const std::string* publicId, const std::string& systemId, const std::string& notationName) override
	{
		EventRecorder::unparsedEntityDecl(name, publicId, systemId, notationName);
		forward([&] { _writer.unparsedEntityDecl(name, publicId, systemId, notationName); });
	}

	void binaryData(const char* data, std::size_t length) override
	{
		EventRecorder::binaryData(data, length);
		forward([&] { _writer.binaryData(data, length); });
	}

	void encodedData(short value) override { EventRecorder::encodedData(value); forward([&] { _writer.encodedData(value); }); }
	void encodedData(int value) override { EventRecorder::encodedData(value); forward([&] { _writer.encodedData(value); }); }
	void encodedData(long value) override { EventRecorder::encodedData(value); forward([&] { _writer.encodedData(value); }); }
	void encodedData(bool value) override { EventRecorder::encodedData(value); forward([&] { _writer.encodedData(value); }); }
	void encodedData(float value) override { EventRecorder::encodedData(value); forward([&] { _writer.encodedData(value); }); }
	void encodedData(double value) override { EventRecorder::encodedData(value); forward([&] { _writer.encodedData(value); }); }
	void encodedData(const Ixor::UUID& value) override { EventRecorder::encodedData(value); forward([&] { _writer.encodedData(value); }); }

private:
	template <class F>
	void forward(F f)
	{
		if (!refusal.empty()) return;
		const std::string outcome = refusalOf(f);
		if (outcome != "ok") refusal = outcome;
	}

	FastInfosetWriter& _writer;
};


} // namespace


extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
	std::ostringstream out;
	FastInfosetParser first;
	configure(first);
	std::string outcome;
	std::string refusal;
	std::string firstDigest;
	std::vector<std::string> firstEvents;
	{
		FastInfosetWriter writer(out, false, DocumentVocabulary::VOC_MAP);
		Forwarder forwarder(writer);
		forwarder.attachTo(first);
		outcome = outcomeOf([&] { first.parseMemoryNP(reinterpret_cast<const char*>(data), size); });
		refusal = forwarder.refusal;
		firstDigest = forwarder.digest();
		firstEvents = forwarder.lines;
	}
	if (outcome != "ok" || !refusal.empty()) return 0;

	const std::string written = out.str();
	FastInfosetParser second;
	configure(second);
	EventRecorder again(roundTrip());
	again.attachTo(second);
	const std::string secondOutcome = outcomeOf([&] { second.parseMemoryNP(written.data(), written.size()); });
	if (secondOutcome != "ok" || again.digest() != firstDigest)
	{
		fail("the written document reads differently (" + secondOutcome + ")\n digests " + firstDigest + " and " + again.digest()
			+ "\n" + TestSupport::firstDifference(firstEvents, again.lines));
	}
	return 0;
}
