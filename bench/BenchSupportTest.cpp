// The benchmark is only as good as what it measures: replayed events must
// be the recorded ones, every parser must read the whole document, and
// the output buffer must keep every octet.


#include "BenchSupport.h"
#include "EventRecorder.h"
#include "TestSupport.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/XML/XMLException.h"
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>


using Ixor::XML::Attributes;
using Ixor::XML::XMLChar;
using Ixor::XML::XMLString;


namespace {


std::vector<std::string> testDocuments()
{
	return TestSupport::xmlFilesIn(FASTINFOSET_TEST_DATA);
}


class LineRecorder: public TestSupport::EventRecorder
	/// Every event as a line with every field, and after each element a
	/// line with the answers of its attribute list's lookups, so that two
	/// event sources compare exactly.
{
public:
	std::size_t elements = 0;

	void startElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Attributes& attributes) override
	{
		EventRecorder::startElement(uri, localName, qname, attributes);
		++elements;
		std::string line = "lookups";
		for (int i = 0; i < attributes.getLength(); ++i)
		{
			const XMLString& qn = attributes.getQName(i);
			const XMLString& ns = attributes.getURI(i);
			const XMLString& local = attributes.getLocalName(i);
			line += " @" + std::to_string(attributes.getIndex(qn)) + "/" + std::to_string(attributes.getIndex(ns, local))
				+ " " + attributes.getValue(qn) + "|" + attributes.getValue(ns, local)
				+ "|" + attributes.getType(qn) + "|" + attributes.getType(ns, local);
		}
		add(line + " missing@" + std::to_string(attributes.getIndex("no-such-attribute"))
			+ "/" + std::to_string(attributes.getIndex("urn:none", "no-such-attribute"))
			+ "=" + attributes.getValue("no-such-attribute") + attributes.getValue("urn:none", "no-such-attribute"));
	}
};


// What the files of tests/data leave out: attributes that share a local
// name across namespaces, and the declarations of a DTD.
const char* const INLINE_DOCUMENTS[] =
{
	"<r xmlns:a='urn:a' xmlns:b='urn:b' xmlns='urn:d'><e a:x='1' b:x='2' x='' a:y='4'/><b:e x='5' b:x='6'/></r>",
	"<?xml version='1.0'?>\n"
	"<!DOCTYPE r [\n"
	"<!NOTATION png SYSTEM 'image/png'>\n"
	"<!NOTATION gif PUBLIC '-//gif'>\n"
	"<!ENTITY logo SYSTEM 'logo.png' NDATA png>\n"
	"<!ENTITY pic PUBLIC '-//pic' 'pic.gif' NDATA gif>\n"
	"<!ENTITY greeting 'hello'>\n"
	"<!ATTLIST e kind CDATA 'plain'>\n"
	"]>\n"
	"<r><e y='&greeting;'/><?pi some data?><!--note--><![CDATA[<raw>]]>&greeting; &amp; more</r>",
};


// The event list joins adjacent character data, as convertToFIS does for its
// writer; the host parser cuts it at line ends.
std::vector<std::string> withTextJoined(const std::vector<std::string>& lines)
{
	static const std::string TEXT = "characters ";
	std::vector<std::string> joined;
	bool lastWasText = false;
	for (const std::string& line: lines)
	{
		const bool isText = line.compare(0, TEXT.size(), TEXT) == 0;
		if (isText && lastWasText) joined.back() += line.substr(TEXT.size());
		else joined.push_back(line);
		lastWasText = isText;
	}
	return joined;
}


TEST(BenchEventListTest, ReplayGivesTheRecordedEvents)
{
	std::vector<std::string> documents;
	for (const std::string& path: testDocuments()) documents.push_back(Bench::readFile(path));
	ASSERT_FALSE(documents.empty());
	for (const char* xml: INLINE_DOCUMENTS) documents.push_back(xml);
	for (const std::string& xml: documents)
	{
		SCOPED_TRACE(xml.substr(0, 200));

		LineRecorder direct;
		std::istringstream in(xml);
		TestSupport::parseXML(in, &direct, &direct, &direct);

		Bench::EventList events;
		events.record(xml);
		LineRecorder replayed;
		events.replay(replayed, &replayed, &replayed);

		const std::vector<std::string> expected = withTextJoined(direct.lines);
		EXPECT_EQ(expected, replayed.lines);
		EXPECT_EQ(expected.size() - direct.elements, events.eventCount());
	}
}


TEST(BenchEventListTest, ReplayIntoTheWriterGivesTheConvertersOctets)
{
	// Twice into one buffer: the second document must not see the first.
	for (const std::string& path: testDocuments())
	{
		SCOPED_TRACE(path);
		const std::string xml = Bench::readFile(path);
		const std::string expected = Bench::encodeFastInfoset(xml);
		Bench::EventList events;
		events.record(xml);
		Bench::OutputBuffer out;
		Bench::writeFastInfoset(events, out);
		EXPECT_EQ(expected, out.str());
		Bench::writeFastInfoset(events, out);
		EXPECT_EQ(expected, out.str());

		Bench::convertToFastInfoset(xml, out);
		EXPECT_EQ(expected, out.str());
	}
}


TEST(BenchParserTest, EveryParserSeesTheWholeDocumentEachTime)
{
	// Each parser object reads the document twice, as in the timed loops.
	for (const std::string& path: testDocuments())
	{
		SCOPED_TRACE(path);
		const std::string xml = Bench::readFile(path);
		const std::string fi = Bench::encodeFastInfoset(xml);

		Bench::NullHandler saxHandler;
		Ixor::XML::SAXParser saxParser;
		Bench::setUpXMLParser(saxParser, saxHandler);
		Bench::NullHandler fiHandler;
		Ixor::FastInfoset::FastInfosetParser fiParser;
		Bench::setUpFastInfosetParser(fiParser, fiHandler);
		Bench::ExpatParser expat;
		Bench::LibXml2Parser libxml2;
		for (int i = 0; i < 2; ++i)
		{
			Bench::parseXML(saxParser, xml);
			Bench::parseFastInfoset(fiParser, fi);
			expat.parse(xml.data(), xml.size());
			libxml2.parse(xml.data(), xml.size());
		}

		ASSERT_GT(saxHandler.counts.elements, 0u);
		EXPECT_EQ(saxHandler.counts.elements, fiHandler.counts.elements);
		EXPECT_EQ(saxHandler.counts.characters, fiHandler.counts.characters);
		EXPECT_EQ(saxHandler.counts.elements, expat.counts.elements);
		EXPECT_EQ(saxHandler.counts.characters, expat.counts.characters);
		EXPECT_EQ(saxHandler.counts.elements, libxml2.counts.elements);
	}
}


struct XMLCase { const char* name; std::string xml; bool wellFormed; std::uint64_t characters; };


TEST(BenchParserTest, ExpatAndLibXml2ReadInPiecesAndRefuseMalformedDocuments)
{
	// Documents of more than one 64 KiB piece, with the fault after the first.
	const std::string text(200000, 'x');
	const XMLCase CASES[] =
	{
		{"small",                 "<a>hi</a>",                            true,  2},
		{"three pieces",          "<a>" + text + "</a>",                  true,  text.size()},
		{"exactly one piece",     "<a>" + std::string(65536 - 7, 'y') + "</a>", true, 65536 - 7},
		{"unclosed",              "<a>",                                  false, 0},
		{"mismatched",            "<a></b>",                              false, 0},
		{"repeated attribute",    "<a x='1' x='2'/>",                     false, 0},
		{"undeclared entity",     "<a>&nothing;</a>",                     false, 0},
		{"empty",                 "",                                     false, 0},
		{"fault in a later piece", "<a>" + text + "</b>",                 false, 0},
	};
	for (const XMLCase& c: CASES)
	{
		SCOPED_TRACE(c.name);
		Bench::ExpatParser expat;
		Bench::LibXml2Parser libxml2;
		if (c.wellFormed)
		{
			expat.parse(c.xml.data(), c.xml.size());
			libxml2.parse(c.xml.data(), c.xml.size());
			EXPECT_EQ(c.characters, expat.counts.characters);
			EXPECT_EQ(c.characters, libxml2.counts.characters);
		}
		else
		{
			EXPECT_THROW(expat.parse(c.xml.data(), c.xml.size()), Ixor::XML::XMLException);
			EXPECT_THROW(libxml2.parse(c.xml.data(), c.xml.size()), Ixor::XML::XMLException);
		}
	}
}


TEST(BenchOutputBufferTest, KeepsEveryOctetAcrossGrowthAndReset)
{
	struct WriteCase { const char* name; std::size_t pieces; std::size_t pieceSize; };
	const WriteCase CASES[] =
	{
		{"single octets past the first growth", 200000, 1},
		{"one block larger than the buffer",    1,      1000000},
		{"blocks across growth boundaries",     37,     9973},
		{"nothing",                             0,      0},
	};
	std::mt19937 random(42);
	Bench::OutputBuffer out;
	for (const WriteCase& c: CASES)
	{
		SCOPED_TRACE(c.name);
		out.reset();
		std::string expected;
		for (std::size_t i = 0; i < c.pieces; ++i)
		{
			std::string piece(c.pieceSize, '\0');
			for (char& octet: piece) octet = static_cast<char>(random());
			if (c.pieceSize == 1) out.stream().put(piece[0]);
			else out.stream().write(piece.data(), static_cast<std::streamsize>(piece.size()));
			expected += piece;
		}
		out.stream().flush();
		EXPECT_TRUE(out.stream().good());
		EXPECT_EQ(expected.size(), out.size());
		EXPECT_TRUE(expected == out.str());
	}
}


TEST(BenchSupportTest, TellsFastInfosetFromXML)
{
	struct Case { std::string data; bool fi; };
	const Case CASES[] =
	{
		{Bench::encodeFastInfoset("<a/>"),                         true},
		{std::string("\xE0\x00\x00\x01\x00", 5),                  true},
		{"<?xml encoding='finf'?>" + std::string("\xE0\x00\x00\x01", 4), true},
		{"<?xml encoding=\"finf\"?>",                              true},
		{std::string("\xE0\x00\x00", 3),                          false},
		{"<?xml version='1.0'?><a/>",                             false},
		{"",                                                       false},
	};
	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.data);
		EXPECT_EQ(c.fi, Bench::isFastInfoset(c.data));
	}
}


TEST(BenchSupportTest, GzipSizeIsTheCompressedSize)
{
	std::mt19937 random(7);
	std::string noise(100000, '\0');
	for (char& octet: noise) octet = static_cast<char>(random());
	const std::size_t repetitive = Bench::gzipSize(std::string(1000000, 'a'));
	EXPECT_GT(repetitive, 20u);     // header, trailer and some data
	EXPECT_LT(repetitive, 5000u);
	EXPECT_GT(Bench::gzipSize(noise), noise.size());
	EXPECT_LT(Bench::gzipSize(noise), noise.size() + 100);
}


} // namespace
