#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "DocumentBits.h"
#include "EventRecorder.h"
#include "Reading.h"
#include "TestSupport.h"
#include "Poco/SAX/AttributesImpl.h"
#include "Poco/SAX/DefaultHandler.h"
#include "Poco/SAX/ErrorHandler.h"
#include "Poco/File.h"
#include "Poco/NullStream.h"
#include "Poco/Path.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/TemporaryFile.h"
#include "Poco/SAX/SAXException.h"
#include <gtest/gtest.h>
#include <fstream>
#include <random>
#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using Ixor::XML::XMLReader;


namespace {


const std::string HEADER = fromHex("e0 00 00 01");


class ParserTest: public testing::TestWithParam<Reading>
	/// Every test reads its documents in each of the ways of reading.
{
protected:
	void parse(FastInfosetParser& parser, const std::string& document)
	{
		Input input(document, GetParam());
		input.parse(parser);
	}

	std::string events(const std::string& document, bool loadExternalVocabularies = false)
		/// The events of a document as text; an exception ends them with its message.
	{
		EventRecorder recorder;
		FastInfosetParser parser;
		parser.setLoadExternalVocabularies(loadExternalVocabularies);
		recorder.attachTo(parser);
		try
		{
			parse(parser, document);
		}
		catch (const Ixor::Exception& exc)
		{
			recorder.add("! " + exc.message());
		}
		return recorder.text();
	}

	void expectRefusedCleanly(const std::string& input)
		/// Either input is a document, or an exception of the library's
		/// family, ending in the octet where the fault was found, ends the
		/// parse.
	{
		EventRecorder recorder;
		FastInfosetParser parser;
		recorder.attachTo(parser);
		try
		{
			parse(parser, input);
		}
		catch (const FISException& exc)
		{
			EXPECT_NE(std::string::npos, exc.message().find(" (at octet ")) << exc.message();
		}
	}
};


INSTANTIATE_TEST_SUITE_P(Readings, ParserTest, testing::ValuesIn(READINGS), testing::PrintToStringParamName());


std::string sampleDocument()
	/// A small document with most kinds of items.
{
	return writeDocument([](FastInfosetWriter& w)
	{
		const std::string system("n.dtd");
		w.notationDecl("n", 0, &system);
		w.startDocument();
		w.startDTD("r", "-//P//EN", "r.dtd");
		w.endDTD();
		w.startPrefixMapping("p", "urn:p");
		Ixor::XML::AttributesImpl attributes;
		attributes.addAttribute("", "a", "a", "CDATA", "value");
		attributes.addAttribute("urn:p", "b", "p:b", "CDATA", "value");
		w.startElement("urn:p", "root", "p:root", attributes);
		w.characters("some text");
		w.comment("note", 0, 4);
		w.processingInstruction("pi", "data");
		w.encodedData(42);
		w.encodedData(3.5);
		w.startCDATA();
		w.characters("x<y");
		w.endCDATA();
		w.emptyElement("urn:p", "root", "p:root", attributes);
		w.endElement("urn:p", "root", "p:root");
		w.endPrefixMapping("p");
		w.endDocument();
	});
}


class OpenConnection: public std::streambuf
	/// What a sender has sent so far, handed out a few octets at a time. The
	/// connection stays open: asking it for more than was sent would block,
	/// so it is noted instead.
{
public:
	explicit OpenConnection(std::size_t pieceSize):
		_pieceSize(pieceSize)
	{
	}

	void send(const std::string& octets)
	{
		_sent += octets;
	}

	bool waited = false;

protected:
	int_type underflow() override
	{
		if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
		if (_next == _sent.size())
		{
			waited = true;
			return traits_type::eof();
		}
		const std::size_t count = std::min(_pieceSize, _sent.size() - _next);
		_piece.assign(_sent, _next, count);
		_next += count;
		setg(&_piece[0], &_piece[0], &_piece[0] + count);
		return traits_type::to_int_type(_piece[0]);
	}

private:
	std::size_t _pieceSize;
	std::string _sent;
	std::size_t _next = 0;
	std::string _piece;
};


} // namespace


TEST(ParserStreamTest, ADocumentIsReadAsSoonAsItsLastOctetArrives)
{
	// The second document is sent only after the first was read, as a
	// client sends a request once it has the answer to the one before.
	const std::string first = sampleDocument();
	const std::string second = HEADER + fromHex("00 3c 00 72 ff");
	for (std::size_t pieceSize: {1, 3, 5000})
	{
		SCOPED_TRACE(pieceSize);
		OpenConnection connection(pieceSize);
		std::istream in(&connection);
		Ixor::XML::InputSource source(in);
		FastInfosetParser parser;
		EventRecorder recorder;
		recorder.attachTo(parser);
		for (const std::string* pDocument: {&first, &second})
		{
			recorder.clear();
			connection.send(*pDocument);
			parser.parse(&source);
			EXPECT_FALSE(connection.waited);
			EXPECT_EQ(pDocument->size(), parser.lastDocumentSize());
			EXPECT_NE(std::string::npos, recorder.text().find("endDocument"));
		}
	}
}


TEST_P(ParserTest, ItemsTheWriterNeverProducesAreRead)
{
	struct { const char* what; std::string document; const char* events; } cases[] =
	{
		{"a UTF-16 chunk",
			// 10 0 0 01 10|00000001: length 4, big-endian U+00C4 U+20AC
			HEADER + fromHex("00 3c 00 72 86 01 00c4 20ac ff"),
			"startDocument\nstartElement {}r r\ncharacters \xC3\x84\xE2\x82\xAC\nendElement {}r r\nendDocument\n"},
		{"a chunk in a restricted alphabet of the initial vocabulary",
			// initial vocabulary with one alphabet "abc" (index 16); the chunk:
			// 10 0 0 10 00|001111 (alphabet 16) 00 (length 1), 1b = 00 01 10 11
			HEADER + fromHex("20 0800 00 02 616263 3c 00 72 88 3c 1b ff"),
			"startDocument\nstartElement {}r r\ncharacters abc\nendElement {}r r\nendDocument\n"},
		{"an element name from the initial vocabulary",
			// local name "a" and the surrogate (no prefix, no namespace, local 1);
			// the element is index 1 at the third bit: 00 000000
			HEADER + fromHex("20 0082 00 00 61 00 00 00 00 ff"),
			"startDocument\nstartElement {}a a\nendElement {}a a\nendDocument\n"},
		{"additional data is skipped",
			HEADER + fromHex("40 00 01 6964 00 78 3c 00 72 ff"),
			"startDocument\nstartElement {}r r\nendElement {}r r\nendDocument\n"},
		{"encoding scheme, standalone and version are read and dropped",
			HEADER + fromHex("07 04 5554462d38 01 02 312e30 3c 00 72 ff"),
			"startDocument\nstartElement {}r r\nendElement {}r r\nendDocument\n"},
		{"an entity reference is reported to nobody",
			HEADER + fromHex("00 3c 00 72 c8 00 65 ff"),
			"startDocument\nstartElement {}r r\nendElement {}r r\nendDocument\n"},
		{"a literal added twice gets two indexes",
			// "x" literal with add-to-table twice, then indexes 2 and 1: 10 1 00001, 10 1 00000
			HEADER + fromHex("00 3c 00 72 90 78 90 78 a1 a0 ff"),
			"startDocument\nstartElement {}r r\ncharacters x\ncharacters x\ncharacters x\ncharacters x\nendElement {}r r\nendDocument\n"},
		{"an unknown child code",
			HEADER + fromHex("00 3c 00 72 e3"),
			"startDocument\nstartElement {}r r\n! Parse error: unknown element child code (at octet 8)\n"},
		{"an invalid child code",
			HEADER + fromHex("00 3c 00 72 cc"),
			"startDocument\nstartElement {}r r\n! Invalid child element (at octet 8)\n"},
		{"an element cut short",
			HEADER + fromHex("00 3c 00 72"),
			"startDocument\nstartElement {}r r\n! Unexpected end of stream while parsing element children (at octet 8)\n"},
		{"a chunk cut short uses the typed reader's spelling",
			HEADER + fromHex("00 3c 00 72 90"),
			"startDocument\nstartElement {}r r\n! Unexpected end of stream while parsing octet string (at octet 9)\n"},
		{"an initial vocabulary without tables",
			HEADER + fromHex("20 0000"),
			"! Initial Vocabulary detected with zero information in it - at least one dictionary required (at octet 7)\n"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.what);
		EXPECT_EQ(c.events, events(c.document));
	}
}


TEST_P(ParserTest, HostileInputsRaiseTheLibrarysExceptionsWithTheOctet)
{
	struct Case { const char* what; std::string document; const char* exception; std::string message; };
	const std::string root = HEADER + fromHex("00 3c 00 72");
	const Case cases[] =
	{
		{"an element name index past the table", HEADER + fromHex("00 04 ff"),
			// 0 0 000100: index 5 at the third bit
			"FastInfoset Encoding Exception", "Index 5 names no entry of the element name table (at octet 6)"},
		{"a chunk index past the table", root + fromHex("a4 ff f0"),
			// 10 1 00100
			"FastInfoset Encoding Exception", "Index 5 names no entry of the content character chunk table (at octet 9)"},
		{"an attribute value index past the table", HEADER + fromHex("00 7c 00 72 78 00 61 84 ff f0"),
			// attribute "a" = 1 0000100
			"FastInfoset Encoding Exception", "Index 5 names no entry of the attribute value table (at octet 12)"},
		{"a prefix index past the table", HEADER + fromHex("00 38 c2 84 ff f0"),
			// 0 0 111000, 1100 00 1 0, prefix 1 0000100
			"FastInfoset Encoding Exception", "Index 5 names no entry of the prefix table (at octet 8)"},
		{"a name of the initial vocabulary with a prefix index past the table", HEADER + fromHex("20 0002 00 02 04 00 00 ff"),
			// one element name surrogate: prefix 5, local name 1
			"FastInfoset Encoding Exception", "Index 5 names no entry of the prefix table (at octet 12)"},
		{"a reserved integer form", HEADER + fromHex("00 31 00 00 00 ff"),
			// 0 0 110001
			"FastInfoset Encoding Exception", "Integer uses a reserved form (at octet 6)"},
		{"an integer above 2^20", root + fromHex("bf ff ff ff ff f0"),
			// 10 1 11111, 4 + 20 bits of 1
			"FastInfoset Encoding Exception", "Integer value larger than 2^20 (at octet 12)"},
		{"notations without their terminator", HEADER + fromHex("10 ff"),
			"FastInfoset Encoding Exception", "Invalid terminator of notations (at octet 5)"},
		{"unparsed entities without their terminator", HEADER + fromHex("08 ff"),
			"FastInfoset Encoding Exception", "Invalid terminator of unparsed entities (at octet 5)"},
		{"a document type declaration without its terminator", HEADER + fromHex("00 c4 00"),
			"FastInfoset Encoding Exception", "Invalid terminator of document type declaration (at octet 6)"},
		{"an undefined restricted alphabet", root + fromHex("88 4c 00 ff f0"),
			// 10 0 0 10 00|010011: alphabet 20
			"FastInfoset Encoding Exception", "Restricted alphabet 20 is not defined (at octet 9)"},
		{"an unknown encoding algorithm", root + fromHex("8c 50 00 ff f0"),
			// 10 0 0 11 00|010100: algorithm 21
			"FastInfoset Exception", "Invalid decoding defined (at octet 9)"},
		{"a document cut short", root.substr(0, root.size() - 1),
			"FastInfoset Parse Exception", "Unexpected end of stream while parsing octet string (at octet 7)"},
	};

	struct Errors: public Ixor::XML::ErrorHandler
	{
		std::vector<std::string> fatal;
		void warning(const Ixor::XML::SAXException&) override {}
		void error(const Ixor::XML::SAXException&) override {}
		void fatalError(const Ixor::XML::SAXException& exc) override { fatal.push_back(exc.message()); }
	};
	for (const Case& c: cases)
	{
		SCOPED_TRACE(c.what);
		Errors errors;
		NullHandler handler;
		FastInfosetParser parser;
		handler.attachTo(parser);
		parser.setErrorHandler(&errors);
		std::string thrown = "no exception";
		try
		{
			parse(parser, c.document);
		}
		catch (const FISException& exc)
		{
			thrown = std::string(exc.name()) + ": " + exc.message();
		}
		EXPECT_EQ(std::string(c.exception) + ": " + c.message, thrown);
		EXPECT_EQ(std::vector<std::string>{c.message}, errors.fatal);
	}

	// What a handler throws passes as it is, and is no fault of the input.
	struct Stopping: public NullHandler
	{
		void startElement(const std::string&, const std::string&, const std::string&, const Ixor::XML::Attributes&) override
		{
			throw FISException("stop");
		}
	} stopping;
	Errors errors;
	FastInfosetParser parser;
	parser.setContentHandler(&stopping);
	parser.setErrorHandler(&errors);
	EXPECT_EQ("stop", messageOf<FISException>([&] { parse(parser, root + fromHex("ff")); }));
	EXPECT_TRUE(errors.fatal.empty());
}


TEST_P(ParserTest, CDATAIsFramedOnlyForALexicalHandler)
{
	const std::string document = writeDocument([](FastInfosetWriter& w)
	{
		w.startDocument();
		w.startElement("", "r", "r");
		w.startCDATA();
		w.characters("x<y");
		w.endCDATA();
		w.endElement("", "r", "r");
		w.endDocument();
	});
	EXPECT_EQ("startDocument\nstartElement {}r r\nstartCDATA\ncharacters x<y\nendCDATA\nendElement {}r r\nendDocument\n", events(document));

	EventRecorder recorder;
	FastInfosetParser parser;
	parser.setContentHandler(&recorder);
	parse(parser, document);
	EXPECT_EQ("startDocument\nstartElement {}r r\ncharacters x<y\nendElement {}r r\nendDocument\n", recorder.text());
}


TEST(ParserFeaturesTest, FeaturesAndPropertiesRefuseWhatTheyDoNotKnow)
{
	FastInfosetParser parser;
	EXPECT_TRUE(parser.getFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES));
	EXPECT_TRUE(parser.getFeature(XMLReader::FEATURE_NAMESPACES));
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	EXPECT_EQ("namespace support cannot be disabled",
		messageOf<Ixor::XML::SAXNotSupportedException>([&] { parser.setFeature(XMLReader::FEATURE_NAMESPACES, false); }));
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, false);
	EXPECT_FALSE(parser.getFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES));
	EXPECT_EQ("urn:x", messageOf<Ixor::XML::SAXNotRecognizedException>([&] { parser.setFeature("urn:x", true); }));
	EXPECT_EQ("urn:x", messageOf<Ixor::XML::SAXNotRecognizedException>([&] { parser.getFeature("urn:x"); }));
	EXPECT_EQ("property does not take a string value: " + XMLReader::PROPERTY_LEXICAL_HANDLER,
		messageOf<Ixor::XML::SAXNotSupportedException>([&] { parser.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, std::string("x")); }));
	EXPECT_EQ("urn:x", messageOf<Ixor::XML::SAXNotRecognizedException>([&] { parser.setProperty("urn:x", std::string("x")); }));
	EXPECT_EQ("urn:x", messageOf<Ixor::XML::SAXNotRecognizedException>([&] { parser.getProperty("urn:x"); }));

	EventRecorder typed;
	Ixor::XML::DefaultHandler plain;
	parser.setContentHandler(&typed);
	parser.setContentHandler(&plain);
	EXPECT_EQ(&plain, parser.getContentHandler());

	Ixor::XML::InputSource nowhere;
	EXPECT_THROW(parser.parse(&nowhere), Ixor::Exception);
}


TEST_P(ParserTest, QualifiedNamesFollowTheNamespacePrefixesFeature)
{
	// As the host's parser reports them: qualified names of elements and
	// attributes with the feature on, none with it off; attributes of type
	// CDATA in the host's own list, which its DOM builder needs.
	struct Names: public NullHandler
	{
		std::vector<std::string> lines;

		void startElement(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes) override
		{
			std::string line = "{" + uri + "}" + localName + " " + qname;
			for (int i = 0; i < attributes.getLength(); ++i)
				line += " {" + attributes.getURI(i) + "}" + attributes.getLocalName(i) + "[" + attributes.getQName(i) + "|" + attributes.getType(i) + "]";
			const Ixor::XML::AttributesImpl* pList = dynamic_cast<const Ixor::XML::AttributesImpl*>(&attributes);
			if (pList) line += " " + std::to_string(pList->end() - pList->begin()) + " in the host's list";
			lines.push_back(line);
		}

		void endElement(const std::string& uri, const std::string& localName, const std::string& qname) override
		{
			lines.push_back("/{" + uri + "}" + localName + " " + qname);
		}
	};

	const std::string document = writeDocument([](FastInfosetWriter& w)
	{
		w.startDocument();
		w.startPrefixMapping("p", "urn:p");
		w.startPrefixMapping("q", "urn:q");
		Ixor::XML::AttributesImpl attributes;
		attributes.addAttribute("", "a", "a", "CDATA", "1");
		attributes.addAttribute("urn:q", "b", "q:b", "CDATA", "2");
		w.startElement("urn:p", "root", "p:root", attributes);
		w.emptyElement("", "plain", "plain", attributes);
		w.endElement("urn:p", "root", "p:root");
		w.endPrefixMapping("q");
		w.endPrefixMapping("p");
		w.endDocument();
	});
	const std::vector<std::string> withPrefixes =
	{
		"{urn:p}root p:root {}a[a|CDATA] {urn:q}b[q:b|CDATA] 2 in the host's list",
		"{}plain plain {}a[a|CDATA] {urn:q}b[q:b|CDATA] 2 in the host's list",
		"/{}plain plain",
		"/{urn:p}root p:root",
	};
	const std::vector<std::string> withoutPrefixes =
	{
		"{urn:p}root  {}a[|CDATA] {urn:q}b[|CDATA] 2 in the host's list",
		"{}plain  {}a[|CDATA] {urn:q}b[|CDATA] 2 in the host's list",
		"/{}plain ",
		"/{urn:p}root ",
	};
	for (bool prefixes: {true, false})
	{
		SCOPED_TRACE(prefixes);
		Names names;
		FastInfosetParser parser;
		parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, prefixes);
		parser.setContentHandler(&names);
		parse(parser, document);
		EXPECT_EQ(prefixes ? withPrefixes : withoutPrefixes, names.lines);
	}
}


TEST_P(ParserTest, OneParserReadsSeveralDocuments)
{
	// Each document's alphabets get the same indexes, however many came before.
	const std::string alphabetDocument = HEADER + fromHex("20 0800 00 02 616263 3c 00 72 88 3c 1b ff");
	FastInfosetParser reused;
	EventRecorder alphabetEvents;
	reused.setContentHandler(&alphabetEvents);
	for (int i = 0; i < 2; ++i) parse(reused, alphabetDocument);
	EXPECT_EQ("characters abc", alphabetEvents.lines.at(7));

	const std::string document = sampleDocument();
	const std::string once = events(document);
	EventRecorder recorder;
	FastInfosetParser parser;
	recorder.attachTo(parser);
	for (int i = 0; i < 3; ++i)
	{
		recorder.clear();
		parse(parser, document);
		EXPECT_EQ(once, recorder.text());
	}
}


TEST_P(ParserTest, SeveralDocumentsFollowOneAnother)
{
	// Documents of different sizes, one larger than the reader's buffer, one
	// whose last octet holds the terminators of element and document.
	std::vector<std::string> documents;
	std::vector<std::string> expected;
	for (std::size_t size: {10, 3000, 1})
	{
		documents.push_back(writeDocument([&](FastInfosetWriter& w)
		{
			w.startDocument();
			w.startElement("", "r", "r");
			w.characters(std::string(size, 'x'));
			w.endElement("", "r", "r");
			w.endDocument();
		}));
		expected.push_back("startDocument\nstartElement {}r r\ncharacters " + std::string(size, 'x') + "\nendElement {}r r\nendDocument\n");
	}
	const std::string all = documents[0] + documents[1] + documents[2];

	// A stream that seeks is left where each document ends; one that cannot
	// seek leaves the parser the octets it read beyond. In memory, each
	// document starts lastDocumentSize() octets on.
	Input input(all, GetParam());
	FastInfosetParser parser;
	EventRecorder recorder;
	recorder.attachTo(parser);
	for (std::size_t i = 0; i < documents.size(); ++i)
	{
		recorder.clear();
		input.parse(parser);
		EXPECT_EQ(expected[i], recorder.text());
		EXPECT_EQ(documents[i].size(), parser.lastDocumentSize());
	}
	// The input is at its end: a fourth parse finds no document.
	EXPECT_THROW(input.parse(parser), FISException);
	if (GetParam() == Reading::WHOLE_STREAM)
	{
		input.stream().clear();
		EXPECT_EQ(static_cast<std::streamoff>(all.size()), input.stream().tellg());
	}
}


TEST_P(ParserTest, ReEncodingGivesTheSameOctets)
{
	const std::string document = sampleDocument();
	std::ostringstream out;
	{
		FastInfosetWriter writer(out);
		FastInfosetParser parser(DocumentVocabulary::VOC_HASH);
		parser.initialize(&writer);
		parse(parser, document);
	}
	EXPECT_EQ(toHex(document), toHex(out.str()));
}


TEST_P(ParserTest, TruncatedFlippedAndRandomInputEndsInAnException)
{
	const std::string document = sampleDocument();
	for (std::size_t length = 0; length < document.size(); ++length)
	{
		SCOPED_TRACE(length);
		const std::string prefix = document.substr(0, length);
		std::string message = events(prefix);
		EXPECT_EQ('!', message[message.rfind('\n', message.size() - 2) + 1]) << message;
		expectRefusedCleanly(prefix);
	}
	for (std::size_t bit = 0; bit < document.size() * 8; ++bit)
	{
		std::string flipped = document;
		flipped[bit / 8] ^= static_cast<char>(0x80 >> (bit % 8));
		expectRefusedCleanly(flipped);
	}
	std::mt19937 random(1234);
	for (int i = 0; i < 3000; ++i)
	{
		std::string noise(random() % 64, '\0');
		for (char& c: noise) c = static_cast<char>(random());
		expectRefusedCleanly(HEADER + noise);
		expectRefusedCleanly(document.substr(0, random() % document.size()) + noise);
	}
}


TEST_P(ParserTest, DeepNestingIsLimited)
{
	// The first element names "r" literally; each further one is index 1.
	const int depth = 200000;
	std::string document = HEADER + fromHex("00 3c 00 72") + std::string(depth - 1, '\0');
	EXPECT_EQ("Maximum element depth exceeded (at octet 10007)", messageOf<FISParseException>([&]
	{
		FastInfosetParser parser;
		parse(parser, document);
	}));

	// The number of declarations per element is limited too.
	std::ostringstream declarations;
	{
		FastInfosetWriter w(declarations, false, DocumentVocabulary::VOC_MAP);
		w.startDocument();
		for (int i = 0; i < 11; ++i) w.startPrefixMapping("p" + std::to_string(i), "u");
		w.emptyElement("", "e", "e");
		w.endDocument();
	}
	const std::string declared = declarations.str();
	FastInfosetParser limited;
	limited.setMaxNamespaceDeclarations(10);
	EXPECT_EQ("Maximum number of namespace declarations exceeded (at octet 58)",
		messageOf<FISParseException>([&] { parse(limited, declared); }));
	limited.setMaxNamespaceDeclarations(11);
	parse(limited, declared);

	// Closed properly, the same depth is read when the limit allows it.
	document += std::string(depth / 2, '\xff') + '\xf0';
	FastInfosetParser parser;
	parser.setMaxElementDepth(depth);
	parse(parser, document);
}


namespace {


struct ExternalVocabularyFiles
	/// A vocabulary document as XML (under two spellings of its extension)
	/// and as Fast Infoset, in a folder of its own.
{
	ExternalVocabularyFiles():
		folder(Poco::TemporaryFile::tempName())
	{
		folder.createDirectories();
		const std::string xml = "<v xmlns='urn:v' xmlns:p='urn:p'><p:name kind='k'>text</p:name><other/></v>";
		write("vocab.xml", xml);
		write("VOCAB.XML", xml);

		// What the parser builds from the XML file, built the same way here.
		Poco::NullOutputStream nowhere;
		FastInfosetWriter collector(nowhere);
		std::ostringstream fi;
		{
			FastInfosetWriter writer(fi);
			feedXML(xml, writer);
			feedXML(xml, collector);
		}
		write("vocab.fi", fi.str());
		vocabulary = collector.getDocumentVocabulary();
	}

	~ExternalVocabularyFiles()
	{
		folder.remove(true);
	}

	static void feedXML(const std::string& xml, FastInfosetWriter& writer)
	{
		std::istringstream in(xml);
		parseXML(in, &writer, &writer, &writer);
	}

	void write(const std::string& name, const std::string& content)
	{
		std::ofstream out(path(name), std::ios::binary);
		out << content;
	}

	std::string path(const std::string& name) const
	{
		return Poco::Path(folder.path()).append(name).toString();
	}

	Poco::File folder;
	DocumentVocabulary vocabulary;
};


std::string documentAgainst(const DocumentVocabulary& vocabulary, const std::string& uri)
	/// A document that uses the names of the vocabulary document by index.
{
	std::ostringstream out;
	{
		FastInfosetWriter writer(out, false, vocabulary);
		writer.setExternalVocabulary(uri, vocabulary);
		writer.startDocument();
		writer.startElement("urn:v", "v", "");
		Ixor::XML::AttributesImpl attributes;
		attributes.addAttribute("", "kind", "kind", "CDATA", "k");
		writer.startElement("urn:p", "name", "p:name", attributes);
		writer.characters("text");
		writer.endElement("urn:p", "name", "p:name");
		writer.endElement("urn:v", "v", "");
		writer.endDocument();
	}
	return out.str();
}


} // namespace


TEST_P(ParserTest, ExternalVocabulariesAreLoadedOnlyWhenAllowed)
{
	ExternalVocabularyFiles files;
	const std::string expected =
		"startDocument\nstartPrefixMapping ns1=urn:v\nstartElement {urn:v}v ns1:v\nstartPrefixMapping p=urn:p\n"
		"startElement {urn:p}name p:name {}kind[kind|CDATA]=k\ncharacters text\nendElement {urn:p}name p:name\nendPrefixMapping p\n"
		"endElement {urn:v}v ns1:v\nendPrefixMapping ns1\nendDocument\n";
	for (const char* name: {"vocab.xml", "VOCAB.XML", "vocab.fi"})
	{
		SCOPED_TRACE(name);
		const std::string uri = files.path(name);
		const std::string document = documentAgainst(files.vocabulary, uri);
		// Only the URI is written: every name and string is an index.
		EXPECT_EQ(std::string::npos, document.find("text"));
		EXPECT_EQ(expected, events(document, true));

		// By default a document cannot make the parser open a file.
		const std::string offset = " (at octet " + std::to_string(document.find(uri) + uri.size()) + ")";
		FastInfosetParser parser;
		EXPECT_EQ("External vocabulary loading is disabled (FastInfosetParser::setLoadExternalVocabularies): " + uri + offset,
			messageOf<FISException>([&] { parse(parser, document); }));
	}

	// What is not a regular file, or is too large, is refused before it is read.
	ASSERT_EQ(0, ::mkfifo(files.path("fifo").c_str(), 0600));
	const std::string vocabularyFile = files.path("vocab.fi");
	const std::uint64_t vocabularySize = Poco::File(vocabularyFile).getSize();
	struct { std::string uri; std::uint64_t limit; std::string message; } refused[] =
	{
		{files.path("fifo"), 1000, "External vocabulary is not a regular file: " + files.path("fifo")},
		{files.folder.path(), 1000, "External vocabulary is not a regular file: " + files.folder.path()},
		{"/dev/zero", 1000, "External vocabulary is not a regular file: /dev/zero"},
		{"http://example.com/v.fi", 1000, "External vocabulary is not a local file: http://example.com/v.fi"},
		{vocabularyFile, vocabularySize - 1, "External vocabulary is larger than " + std::to_string(vocabularySize - 1)
			+ " octets (FastInfosetParser::setMaxExternalVocabularySize): " + vocabularyFile},
		{"file://" + vocabularyFile, vocabularySize, ""},
	};
	for (const auto& c: refused)
	{
		SCOPED_TRACE(c.uri);
		FastInfosetParser parser;
		parser.setLoadExternalVocabularies(true);
		parser.setMaxExternalVocabularySize(c.limit);
		DocumentVocabulary loaded;
		const std::string message = messageOf<FISException>([&] { parser.loadExternalVocabulary(c.uri, loaded); });
		EXPECT_EQ(c.message.empty() ? "no exception" : c.message, message);
	}

	// A vocabulary document as XML may hold any number of strings: it is not
	// limited by the capacities of a writer's hash tables.
	std::string manyComments = "<v>";
	for (int i = 0; i < 40; ++i) manyComments += "<!--c" + std::to_string(i) + "-->";
	files.write("comments.xml", manyComments + "</v>");
	Poco::NullOutputStream ignored;
	FastInfosetWriter commentsCollector(ignored, false, DocumentVocabulary::VOC_MAP);
	ExternalVocabularyFiles::feedXML(manyComments + "</v>", commentsCollector);
	const std::string commentsDocument = documentAgainst(commentsCollector.getDocumentVocabulary(), files.path("comments.xml"));
	EXPECT_EQ(std::string::npos, events(commentsDocument, true).find("! "));

	// A vocabulary document that names itself ends in an exception, not in
	// endless recursion.
	const std::string self = files.path("self.fi");
	files.write("self.fi", documentAgainst(files.vocabulary, self));
	FastInfosetParser parser;
	parser.setLoadExternalVocabularies(true);
	const std::string message = messageOf<FISException>([&] { parser.parse(self); });
	EXPECT_NE(std::string::npos, message.find("External vocabularies nested too deeply: " + self)) << message;
}


TEST_P(ParserTest, AVocabularyGivenInAdvanceStartsEveryDocumentAfresh)
{
	// Given under a URI, it is used without loading: the file need not exist.
	ExternalVocabularyFiles files;
	const std::string missing = files.path("missing.fi");
	Poco::NullOutputStream nowhere;
	FastInfosetWriter collector(nowhere, false, DocumentVocabulary(missing, DocumentVocabulary::VOC_HASH));
	ExternalVocabularyFiles::feedXML("<v xmlns='urn:v' xmlns:p='urn:p'><p:name kind='k'>text</p:name><other/></v>", collector);
	const DocumentVocabulary& given = collector.getDocumentVocabulary();
	const std::string against = documentAgainst(given, missing);
	EXPECT_NE(std::string::npos, events(against).find("! "));

	// A document that adds a chunk after the vocabulary's last one; a
	// document without initial vocabulary; then one that repeats the added
	// chunk's index, which must name nothing.
	const unsigned int next = static_cast<unsigned int>(given.vocabulary(DocumentVocabulary::CONTENT_CHARACTER_CHUNK)->size());
	std::ostringstream adding;
	{
		FastInfosetWriter writer(adding, false, given);
		writer.setExternalVocabulary(missing, given);
		writer.startDocument();
		writer.startElement("", "r", "r");
		writer.characters("added");
		writer.endElement("", "r", "r");
		writer.endDocument();
	}
	// Against the vocabulary: an element "r" holding chunk index next.
	const std::string repeating = DocumentBits().header()
		.bits(0x20, 7)             // an initial vocabulary
		.bits(0x1000, 16)          // 000 1000000000000: only an external vocabulary
		.literal(missing)
		.bits(0x3C0072, 24)        // element "r"
		.bits(5, 3)                // 10 1: a chunk by index
		.integer(next)
		.bits(0xFF, 8).done();
	// A literal equal to a given entry still takes the next index.
	const std::string again = DocumentBits().header()
		.bits(0x20, 7)
		.bits(0x1000, 16)
		.literal(missing)
		.bits(0x3C0072, 24)        // element "r"
		.bits(0x9, 4)              // 10 0 1: a chunk literal added to the table
		.bits(0, 2)                // in UTF-8
		.string("text")
		.bits(5, 3)                // 10 1: a chunk by index
		.integer(next)
		.bits(0xFF, 8).done();
	const std::string plain = HEADER + fromHex("00 3c 00 72 ff");
	struct { const char* what; std::string document; std::string events; } documents[] =
	{
		{"against the vocabulary", against, ""},
		{"adding a chunk", adding.str(), "startDocument\nstartElement {}r r\ncharacters added\nendElement {}r r\nendDocument\n"},
		{"without initial vocabulary", plain, "startDocument\nstartElement {}r r\nendElement {}r r\nendDocument\n"},
		{"against it again", against, ""},
		{"adding a chunk the vocabulary holds", again, "startDocument\nstartElement {}r r\ncharacters text\ncharacters text\nendElement {}r r\nendDocument\n"},
		{"naming the added chunk", repeating, "startDocument\nstartElement {}r r\n! Index " + std::to_string(next)
			+ " names no entry of the content character chunk table (at octet " + std::to_string(repeating.size() - 1) + ")\n"},
	};
	EventRecorder recorder;
	FastInfosetParser parser(given);
	recorder.attachTo(parser);
	std::string firstEvents;
	for (const auto& d: documents)
	{
		SCOPED_TRACE(d.what);
		recorder.clear();
		try
		{
			parse(parser, d.document);
		}
		catch (const Ixor::Exception& exc)
		{
			recorder.add("! " + exc.message());
		}
		if (firstEvents.empty()) firstEvents = recorder.text();
		EXPECT_EQ(d.events.empty() ? firstEvents : d.events, recorder.text());
	}
	EXPECT_NE(std::string::npos, firstEvents.find("characters text"));
}
