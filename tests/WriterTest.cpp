#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Poco/SAX/AttributesImpl.h"
#include "Poco/SAX/DefaultHandler.h"
#include "Poco/SAX/NamespaceSupport.h"
#include "EventRecorder.h"
#include "ItemWriter.h"
#include "NamespaceTracker.h"
#include "TestSupport.h"
#include "WriterTables.h"
#include <gtest/gtest.h>
#include <functional>
#include <memory>
#include <random>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using Ixor::XML::AttributesImpl;


namespace {


const std::string HEADER = "e0000001";   // identification and version
const std::string NO_OPTIONS = "00";     // padding bit and seven absent components


std::string document(const std::function<void(FastInfosetWriter&)>& events, bool withDocument = true)
	/// The hex octets of a document written by a fresh default writer.
{
	return toHex(writeDocument([&](FastInfosetWriter& writer)
	{
		if (withDocument) writer.startDocument();
		events(writer);
		if (withDocument) writer.endDocument();
	}));
}


std::vector<std::string> parsed(const std::string& document, bool comparable = false)
	/// The events that the parser reports for document, one line each.
{
	EventRecorder::Options options;
	options.comparable = comparable;
	EventRecorder recorder(options);
	FastInfosetParser parser;
	recorder.attachTo(parser);
	parser.parseMemoryNP(document.data(), document.size());
	return recorder.lines;
}


AttributesImpl attributes(std::initializer_list<std::pair<const char*, const char*>> list)
{
	AttributesImpl result;
	for (auto& a: list) result.addAttribute("", a.first, a.first, "CDATA", a.second);
	return result;
}


} // namespace


TEST(WriterTest, SmallDocumentsHaveTheirExactOctets)
{
	struct { const char* what; std::function<void(FastInfosetWriter&)> events; std::string hex; } cases[] =
	{
		{"empty root element",
			[](FastInfosetWriter& w) { w.emptyElement("", "root", "root"); },
			// 0 element, 0 no attributes, 1111 literal name, 0 0 no prefix or namespace: 3c
			// 0 literal local name, 0000011 length 4: 03, "root"
			// 1111 element end, 1111 document end: ff
			"3c 03 726f6f74 ff"},
		{"one attribute and text",
			[](FastInfosetWriter& w)
			{
				w.startElement("", "a", "a", attributes({{"x", "1"}}));
				w.characters("hi");
				w.endElement("", "a", "a");
			},
			// 0 element, 1 attributes, 1111 00 literal name: 7c; 00 "a"
			// 0 attribute, 11110 00 literal attribute name: 78; 00 "x"
			// 0 literal, 1 add to table, 00 UTF-8, 0000 length 1: 40; "1"
			// 1111 end of attributes, 0000 padding: f0
			// 10 chunk, 0 literal, 1 add, 00 UTF-8, 01 length 2: 91; "hi"
			"7c 00 61 78 00 78 40 31 f0 91 6869 ff"},
		{"attribute value indexed the second time",
			[](FastInfosetWriter& w)
			{
				w.startElement("", "r", "r");
				w.emptyElement("", "c", "c", attributes({{"v", "red"}}));
				w.emptyElement("", "c", "c", attributes({{"v", "red"}}));
				w.endElement("", "r", "r");
			},
			// r: 3c 00 "r"
			// c: 7c 00 "c", 78 00 "v", 0 1 00 0010 (length 3): 42 "red", 1111 1111: ff
			// c again: 0 1 000001 element name index 2: 41; 0 0000000 attribute name index 1: 00
			//   1 existing, 0000000 index 1: 80; ff
			// end of r and of the document: ff
			"3c 00 72 7c 00 63 78 00 76 42 726564 ff 41 00 80 ff ff"},
		{"a 16-octet chunk is indexed, a 17-octet chunk never",
			[](FastInfosetWriter& w)
			{
				w.setMaxIndexedStringLength(16);
				w.startElement("", "r", "r");
				w.characters("abcdefghijklmnop");
				w.characters("abcdefghijklmnop");
				w.characters("abcdefghijklmnopq");
				w.characters("abcdefghijklmnopq");
				w.endElement("", "r", "r");
			},
			// 10 0 1 00 10 + 8 bits of 16 - 3: 92 0d
			// 10 1 00000 index 1: a0
			// 10 0 0 00 10 + 8 bits of 17 - 3: 82 0e, twice
			"3c 00 72 92 0d 6162636465666768696a6b6c6d6e6f70 a0"
			" 82 0e 6162636465666768696a6b6c6d6e6f7071 82 0e 6162636465666768696a6b6c6d6e6f7071 ff"},
		{"consecutive integers become one chunk",
			[](FastInfosetWriter& w)
			{
				w.startElement("", "r", "r");
				w.encodedData(1);
				w.encodedData(2);
				w.encodedData(-1);
				w.endElement("", "r", "r");
			},
			// 10 chunk, 0 literal, 0 not added, 11 algorithm, 00000011 (4): 8c | 000011..
			// ..10 + 8 bits of 12 - 3 (length 12): 0e 09, then three big-endian ints
			"3c 00 72 8c 0e 09 00000001 00000002 ffffffff ff"},
		{"binary data as base64",
			[](FastInfosetWriter& w)
			{
				w.startElement("", "r", "r");
				w.binaryData("\x01\x02\x03", 3);
				w.endElement("", "r", "r");
			},
			// 10 0 0 11 00|000001 (algorithm 2) 10|00000000 (length 3)
			"3c 00 72 8c 06 00 010203 ff"},
		{"characters inside CDATA use the CDATA algorithm",
			[](FastInfosetWriter& w)
			{
				w.startElement("", "r", "r");
				w.startCDATA();
				w.characters("x<y");
				w.endCDATA();
				w.endElement("", "r", "r");
			},
			// 10 0 1 11 00|001001 (algorithm 10) 10|00000000 (length 3)
			"3c 00 72 9c 26 00 783c79 ff"},
		{"a comment",
			[](FastInfosetWriter& w)
			{
				w.startElement("", "r", "r");
				w.comment("hi", 0, 2);
				w.endElement("", "r", "r");
			},
			// e2, then 0 literal 1 add 00 UTF-8 0001 (length 2): 41
			"3c 00 72 e2 41 6869 ff"},
		{"a processing instruction",
			[](FastInfosetWriter& w)
			{
				w.startElement("", "r", "r");
				w.processingInstruction("t", "d");
				w.endElement("", "r", "r");
			},
			// e1, target 0 0000000 "t", data 0 1 00 0000 "d"
			"3c 00 72 e1 00 74 40 64 ff"},
		{"a DTD with only a system identifier",
			[](FastInfosetWriter& w)
			{
				w.startDTD("r", "", "r.dtd");
				w.endDTD();
				w.emptyElement("", "r", "r");
			},
			// 110001 1 0: c6, 0 0000100 (length 5) "r.dtd", 1111 then the element's padding: f0
			"c6 04 722e647464 f0 3c 00 72 ff"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.what);
		std::string expected = HEADER + NO_OPTIONS + c.hex;
		expected.erase(std::remove(expected.begin(), expected.end(), ' '), expected.end());
		EXPECT_EQ(expected, document(c.events));
	}
}


TEST(WriterTest, NamespaceDeclarationsGoOutOrderedByPrefix)
{
	const std::string declared = document([](FastInfosetWriter& w)
	{
		w.startPrefixMapping("b", "urn:b");
		w.startPrefixMapping("a", "urn:a");
		w.startPrefixMapping("", "urn:d");
		w.startElement("urn:d", "e", "e");
		w.endElement("urn:d", "e", "e");
	});
	// 0 0 111000: 38; then per declaration 110011, prefix bit, namespace bit:
	// default (0 1): cd 04 "urn:d"; a (1 1): cf 00 "a" 04 "urn:a"; b: cf 00 "b" 04 "urn:b"
	// 1111 000000: f0 and the name at the third bit: 00 1111 0 1: 3d,
	// namespace index 2: 1 0000001: 81, local name 00 "e"
	EXPECT_EQ(HEADER + NO_OPTIONS + "38" + "cd04" + toHex("urn:d") + "cf0061" "04" + toHex("urn:a")
		+ "cf0062" "04" + toHex("urn:b") + "f0" "3d" "81" "0065" "ff", declared);

	const std::string generated = document([](FastInfosetWriter& w) { w.emptyElement("urn:x", "e", ""); });
	// ns1 is declared for urn:x: cf 02 "ns1" 04 "urn:x", f0, then the name with
	// prefix and namespace as indexes 2 and 2: 3f 81 81 00 "e"
	EXPECT_EQ(HEADER + NO_OPTIONS + "38" "cf02" + toHex("ns1") + "04" + toHex("urn:x") + "f0" "3f" "81" "81" "0065" "ff", generated);
}


TEST(WriterTest, HeaderCarriesDeclarationsAndTheInitialVocabulary)
{
	const std::string withNotation = document([](FastInfosetWriter& writer)
	{
		const std::string system("sys");
		writer.notationDecl("n", 0, &system);
		writer.startDocument();
		writer.emptyElement("", "r", "r");
		writer.endDocument();
	}, false);
	// 0 0010000 notations present; 110000 1 0: c2, 00 "n", 02 "sys", f0
	EXPECT_EQ(HEADER + "10" "c2" "006e" "02737973" "f0" "3c0072ff", withNotation);

	std::ostringstream withDeclaration;
	{
		FastInfosetWriter writer(withDeclaration, true, DocumentVocabulary::VOC_HASH);
		writer.startDocument();
		writer.emptyElement("", "r", "r");
		writer.endDocument();
	}
	EXPECT_EQ(toHex("<?xml encoding='finf'?>") + HEADER + NO_OPTIONS + "3c0072ff", toHex(withDeclaration.str()));

	DocumentVocabulary vocabulary;
	bool found = false;
	vocabulary.index(DocumentVocabulary::PREFIX, "p", found);
	std::ostringstream withVocabulary;
	{
		FastInfosetWriter writer(withVocabulary, false, vocabulary);
		writer.startDocument();
		writer.emptyElement("", "r", "r");
		writer.endDocument();
	}
	// 0 0100000 initial vocabulary; 000 padding, 0 0 0 (external, alphabets,
	// algorithms), 1 prefixes, nine 0 bits: 02 00; sequence length 1: 00; 0 0000000 "p"
	EXPECT_EQ(HEADER + "20" "0200" "00" "0070" "3c0072ff", toHex(withVocabulary.str()));
}


TEST(WriterTest, EventSequencesThatMakeNoDocumentAreRefused)
{
	typedef std::function<void(FastInfosetWriter&)> Events;
	const Events none = [](FastInfosetWriter&) {};
	const Events started = [](FastInfosetWriter& w) { w.startDocument(); };
	const Events inRoot = [](FastInfosetWriter& w) { w.startDocument(); w.startElement("", "a", "a"); };
	const Events inCDATA = [](FastInfosetWriter& w) { w.startDocument(); w.startElement("", "a", "a"); w.startCDATA(); };
	const Events afterRoot = [](FastInfosetWriter& w) { w.startDocument(); w.emptyElement("", "a", "a"); };
	const Events ended = [](FastInfosetWriter& w) { w.startDocument(); w.emptyElement("", "a", "a"); w.endDocument(); };
	AttributesImpl sameTwice = attributes({{"x", "1"}, {"y", "2"}, {"x", "3"}});
	AttributesImpl sameNamespaceTwice;
	sameNamespaceTwice.addAttribute("urn:q", "x", "p:x", "CDATA", "1");
	sameNamespaceTwice.addAttribute("urn:q", "x", "q:x", "CDATA", "2");
	AttributesImpl manyWithOneTwice;
	for (int i = 0; i < 40; ++i) manyWithOneTwice.addAttribute("", "a" + std::to_string(i), "", "CDATA", "v");
	manyWithOneTwice.addAttribute("", "a17", "", "CDATA", "again");
	AttributesImpl noName;
	noName.addAttribute("", "", "", "CDATA", "v");
	AttributesImpl badName = attributes({{"a b", "1"}});
	const struct
	{
		const char* message;
		const Events& before;
		Events refused;
	}
	cases[] =
	{
		{"startElement() before startDocument()",              none,      [](FastInfosetWriter& w) { w.startElement("", "a", "a"); }},
		{"characters() before startDocument()",                none,      [](FastInfosetWriter& w) { w.characters("x"); }},
		{"startDocument() inside a document",                  inRoot,    [](FastInfosetWriter& w) { w.startDocument(); }},
		{"startDocument() after endDocument(): a writer writes one document", ended, [](FastInfosetWriter& w) { w.startDocument(); }},
		{"processingInstruction() after endDocument(): a writer writes one document: t", ended, [](FastInfosetWriter& w) { w.processingInstruction("t", "d"); }},
		{"Mismatched end tag: b ends a",                       inRoot,    [](FastInfosetWriter& w) { w.endElement("", "b", "b"); }},
		{"Mismatched end tag: {urn:x}a ends a",                inRoot,    [](FastInfosetWriter& w) { w.endElement("urn:x", "a", ""); }},
		{"endElement() after the root element: a",             afterRoot, [](FastInfosetWriter& w) { w.endElement("", "a", "a"); }},
		{"endElement() inside a CDATA section: a",             inCDATA,   [](FastInfosetWriter& w) { w.endElement("", "a", "a"); }},
		{"endDocument() with the element a open",              inRoot,    [](FastInfosetWriter& w) { w.endDocument(); }},
		{"startElement() after the root element",              afterRoot, [](FastInfosetWriter& w) { w.startElement("", "b", "b"); }},
		{"characters() after the root element",                afterRoot, [](FastInfosetWriter& w) { w.characters("x"); }},
		{"encodedData() outside the root element",             started,   [](FastInfosetWriter& w) { w.encodedData(1); }},
		{"binaryData() outside the root element",              started,   [](FastInfosetWriter& w) { w.binaryData("\x01", 1); }},
		{"endCDATA() without startCDATA()",                    inRoot,    [](FastInfosetWriter& w) { w.endCDATA(); }},
		{"endDTD() without startDTD()",                        started,   [](FastInfosetWriter& w) { w.endDTD(); }},
		{"Cannot nest CDATA sections",                         inCDATA,   [](FastInfosetWriter& w) { w.startCDATA(); }},
		{"notationDecl() with the element a open: n",          inRoot,    [](FastInfosetWriter& w) { w.notationDecl("n", 0, 0); }},
		{"Tag mismatch",                                       started,   [](FastInfosetWriter& w) { w.startElement("", "", ""); }},
		{"Tag mismatch: p:q",                                  started,   [](FastInfosetWriter& w) { w.startElement("urn:u", "", "p:q"); }},
		{"Not an XML name: 1a",                                started,   [](FastInfosetWriter& w) { w.startElement("", "1a", "1a"); }},
		{"Not an XML name: a b",                               inRoot,    [&](FastInfosetWriter& w) { w.emptyElement("", "e", "e", badName); }},
		{"Not an XML name: x y",                               inRoot,    [](FastInfosetWriter& w) { w.processingInstruction("x y", "d"); }},
		{"Not an XML name",                                    inRoot,    [](FastInfosetWriter& w) { w.processingInstruction("", "d"); }},
		{"Not an XML name: n?",                                none,      [](FastInfosetWriter& w) { w.notationDecl("n?", 0, 0); }},
		{"Not a namespace prefix: p:q",                        inRoot,    [](FastInfosetWriter& w) { w.startPrefixMapping("p:q", "urn:x"); w.startElement("", "e", "e"); }},
		{"Duplicate attribute: x",                             inRoot,    [&](FastInfosetWriter& w) { w.emptyElement("", "e", "e", sameTwice); }},
		{"Duplicate attribute: q:x",                           inRoot,    [&](FastInfosetWriter& w) { w.emptyElement("", "e", "e", sameNamespaceTwice); }},
		{"Duplicate attribute: a17",                           inRoot,    [&](FastInfosetWriter& w) { w.emptyElement("", "e", "e", manyWithOneTwice); }},
		{"Attribute without a name",                           inRoot,    [&](FastInfosetWriter& w) { w.emptyElement("", "e", "e", noName); }},
		{"startFragment() not allowed",                        started,   [](FastInfosetWriter& w) { w.startFragment(); }},
		{"endFragment() not allowed",                          started,   [](FastInfosetWriter& w) { w.endFragment(); }},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.message);
		std::ostringstream out;
		FastInfosetWriter writer(out);
		c.before(writer);
		EXPECT_EQ(c.message, messageOf<FISException>([&] { c.refused(writer); }));
	}

	std::ostringstream out;
	FastInfosetWriter writer(out);
	EXPECT_EQ("A DocumentVocabulary with VOC_VECTOR implementation cannot be used by FastInfosetWriter",
		messageOf<Ixor::InvalidArgumentException>([&] { writer.setDocumentVocabulary(DocumentVocabulary(DocumentVocabulary::VOC_VECTOR)); }));
	EXPECT_EQ(DocumentVocabulary::VOC_HASH, writer.getDocumentVocabulary().impl());
}


TEST(WriterTest, RefusedEventsLeaveTheDocumentAsItWas)
{
	// What is refused is checked before any of it goes out: the document
	// goes on as if the event had not come.
	const std::string plain = document([](FastInfosetWriter& w)
	{
		w.startElement("", "a", "a", attributes({{"x", "1"}}));
		w.emptyElement("", "b", "b", attributes({{"y", "2"}}));
		w.endElement("", "a", "a");
	});
	const std::string refusals = document([](FastInfosetWriter& w)
	{
		EXPECT_THROW(w.endElement("", "a", "a"), FISException);
		EXPECT_THROW(w.characters("before"), FISException);
		w.startElement("", "a", "a", attributes({{"x", "1"}}));
		EXPECT_THROW(w.startElement("", "b", "b", attributes({{"y", "1"}, {"y", "2"}})), FISException);
		EXPECT_THROW(w.endElement("", "b", "b"), FISException);
		EXPECT_THROW(w.endDocument(), FISException);
		EXPECT_THROW(w.startDocument(), FISException);
		EXPECT_THROW(w.endCDATA(), FISException);
		w.emptyElement("", "b", "b", attributes({{"y", "2"}}));
		w.endElement("", "a", "a");
		EXPECT_THROW(w.startElement("", "c", "c"), FISException);
		EXPECT_THROW(w.characters("after"), FISException);
	});
	EXPECT_EQ(plain, refusals);
}


TEST(WriterTest, NamesAreCheckedWhenTheyFirstGoOutInFull)
{
	const struct { const char* name; bool xmlName; } cases[] =
	{
		{"_a-1.b",   true},
		{"p:local",  true},    // without namespaces the qualified name is the local name
		{"\xC3\xA9t\xC3\xA9", true},   // été
		{"a\xCC\x81", true},          // a combining mark after the first character
		{"-a",       false},
		{"a b",      false},
		{"\xCC\x81", false},          // a combining mark cannot begin a name
		{"a\xC3",    false},          // cut UTF-8
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.name);
		const std::string name(c.name);
		auto written = [&](std::function<void(FastInfosetWriter&)> events)
		{
			return messageOf<FISException>([&] { document(events); });
		};
		const std::string expected = c.xmlName ? "no exception" : "Not an XML name: " + name;
		EXPECT_EQ(expected, written([&](FastInfosetWriter& w) { w.emptyElement("", name, name); }));
		EXPECT_EQ(expected, written([&](FastInfosetWriter& w) { w.emptyElement("", "e", "e", attributes({{c.name, "v"}})); }));
		EXPECT_EQ(expected, written([&](FastInfosetWriter& w) { w.processingInstruction(name, "d"); w.emptyElement("", "e", "e"); }));
	}
	// A name given to the writer in its vocabulary is taken as it is.
	DocumentVocabulary vocabulary;
	bool found = false;
	vocabulary.index(DocumentVocabulary::LOCAL_NAME, "1a", found);
	std::ostringstream out;
	FastInfosetWriter writer(out, false, vocabulary);
	writer.setExternalVocabulary("urn:v", vocabulary);
	writer.startDocument();
	EXPECT_NO_THROW(writer.emptyElement("", "1a", "1a"));
}


TEST(WriterTest, BuildingBlocksRefuseWrongPositions)
{
	// The blocks are the library's own: each is tried one bit away from
	// where the format lets it start, and writes nothing there.
	std::ostringstream out;
	BitStreamWriter bits(out, false);
	DocumentVocabulary vocabulary;
	WriterTables tables(vocabulary);
	ItemWriter items(bits, tables);
	bits.write(5u, 3);
	const std::string text("t");
	const std::string system("s");
	struct { const char* message; std::function<void()> write; } cases[] =
	{
		{"Illegal startposition for a Attribute value",                      [&] { items.attribute("", "", "a", "v"); }},
		{"Illegal startposition for a CharacterChunk value",                 [&] { items.chunkString("t", 1); }},
		{"Illegal startposition for a writeEncodedCharacterString",          [&] { items.encodedCharacterString("t", 1); }},
		{"Illegal startposition for a NonIdentifyingStringOrIndex value",    [&] { items.nonIdentifyingStringOrIndex("t", 1, DocumentVocabulary::OTHER_STRING); }},
		{"Illegal startposition for a writeQualifiedNameOrIndex value",      [&] { items.qualifiedNameOrIndex("", "", "e", true, 0); }},
		// The first try enters the name in its table, the second finds it.
		{"Illegal startposition for an writeIdentifyingString",              [&] { items.identifyingStringOrIndex(text, DocumentVocabulary::OTHER_NCNAME); }},
		{"Illegal startposition for an writeIdentifyingStringIndex",         [&] { items.identifyingStringOrIndex(text, DocumentVocabulary::OTHER_NCNAME); }},
		{"Illegal startposition for a NamespaceAttribute value",             [&] { items.namespaceAttribute("p", "u"); }},
		{"Illegal startposition for a Notation value",                       [&] { items.notation("n", 0, 0); }},
		{"Illegal startposition for an UnparsedEntity value",                [&] { items.unparsedEntity("n", 0, system, "x"); }},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.message);
		EXPECT_EQ(c.message, messageOf<FISEncodingException>(c.write));
		EXPECT_EQ(3, bits.bitPos());
	}
}


TEST(WriterTest, PointerCharactersStopAtAZeroInsideTheirRange)
{
	const char text[] = {'x', 'a', 'b', 'c', '\0', 'd', 'e', 'f'};   // no terminator after the range
	const std::string zeroInside = document([&](FastInfosetWriter& w)
	{
		w.startElement("", "r", "r");
		w.characters(text, 1, 7);
		w.endElement("", "r", "r");
	});
	const std::string plain = document([](FastInfosetWriter& w)
	{
		w.startElement("", "r", "r");
		w.characters(std::string("abc"));
		w.characters(std::string());   // empty text writes nothing
		w.endElement("", "r", "r");
	});
	EXPECT_EQ(plain, zeroInside);
}


TEST(WriterTest, GeneratedPrefixesCountForTheWritersLife)
{
	// The second element's namespace gets the next number, although the
	// first prefix went out of scope with its element.
	const std::string octets = document([](FastInfosetWriter& w)
	{
		w.startElement("", "r", "r");
		w.emptyElement("urn:x", "e", "");
		w.emptyElement("urn:y", "e", "");
		w.endElement("", "r", "r");
	});
	EXPECT_NE(std::string::npos, octets.find(toHex("ns1") + "04" + toHex("urn:x")));
	EXPECT_NE(std::string::npos, octets.find(toHex("ns2") + "04" + toHex("urn:y")));
}


TEST(WriterTest, NamespaceScopesAnswerAsTheHostsNamespaceSupport)
{
	// Random declarations, undeclarations and contexts over a few prefixes
	// and names, where prefixes are bound twice in one context, hide each
	// other and are dropped from outer contexts: every answer is the one
	// the host's namespace support gives.
	const std::vector<std::string> prefixes = {"", "a", "b", "ns1", "xmlns"};
	const std::vector<std::string> uris = {"", "urn:x", "urn:y", "http://example.org/a-namespace-name-longer-than-a-word"};
	std::mt19937 random(7);
	auto pick = [&random](const std::vector<std::string>& from) -> const std::string& { return from[random() % from.size()]; };
	for (int run = 0; run < 200; ++run)
	{
		Ixor::FastInfoset::NamespaceTracker tracker;
		Ixor::XML::NamespaceSupport host;
		tracker.startDocument();
		host.pushContext();
		std::size_t depth = 0;
		for (int step = 0; step < 40; ++step)
		{
			const std::string& prefix = pick(prefixes);
			const std::string& uri = pick(uris);
			switch (random() % 5)
			{
			case 0: case 1: tracker.declarePrefix(prefix, uri); host.declarePrefix(prefix, uri); break;
			case 2: tracker.undeclarePrefix(prefix); host.undeclarePrefix(prefix); break;
			case 3: tracker.pushContext(); host.pushContext(); ++depth; break;
			default: if (depth > 0) { tracker.popContext(); host.popContext(); --depth; } break;
			}
			for (const std::string& p: prefixes) ASSERT_EQ(host.getURI(p), tracker.uriOf(p)) << "run " << run << " step " << step;
			for (const std::string& u: uris)
			{
				ASSERT_EQ(host.getPrefix(u), tracker.prefixOf(u)) << "run " << run << " step " << step;
				ASSERT_EQ(host.isMapped(u), tracker.isMapped(u)) << "run " << run << " step " << step;
				// An attribute's prefix: the host's own choice when it is not
				// empty and means u here, else the first in order that does.
				std::string expected = host.getPrefix(u);
				if (expected.empty() || host.getURI(expected) != u)
				{
					expected.clear();
					Ixor::XML::NamespaceSupport::PrefixSet candidates;
					host.getPrefixes(u, candidates);
					for (const std::string& p: candidates)
					{
						if (!p.empty() && host.getURI(p) == u && expected.empty()) expected = p;
					}
				}
				ASSERT_EQ(expected, tracker.attributePrefixOf(u)) << "run " << run << " step " << step;
			}
			Ixor::XML::NamespaceSupport::PrefixSet declared;
			host.getDeclaredPrefixes(declared);
			std::vector<Ixor::FastInfoset::NamespaceTracker::Declaration> declarations;
			const std::size_t count = tracker.declarations(declarations);
			ASSERT_EQ(declared.size(), count) << "run " << run << " step " << step;
			std::size_t i = 0;
			for (const std::string& p: declared)
			{
				ASSERT_EQ(p, declarations[i].first);
				ASSERT_EQ(host.getURI(p), declarations[i++].second);
			}
		}
	}
}


TEST(WriterTest, FailingStreamRaisesIOException)
{
	std::ostringstream out;
	out.setstate(std::ios::badbit);
	FastInfosetWriter writer(out);
	writer.startDocument();
	writer.emptyElement("", "r", "r");
	EXPECT_EQ("error while writing Fast Infoset document to stream", messageOf<Ixor::IOException>([&] { writer.endDocument(); }));
	out.clear();
}


TEST(WriterTest, IndexesComeOutAlikeOnTheQuickAndTheGeneralPath)
{
	// Inside a CDATA section text and attribute values take the general
	// path; given by index they have the same bits there. Indexes around
	// every boundary between the integer forms.
	DocumentVocabulary vocabulary(DocumentVocabulary::VOC_MAP);
	bool found = false;
	for (int i = 1; i <= 8300; ++i)
	{
		vocabulary.index(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, "c" + std::to_string(i), found);
		vocabulary.index(DocumentVocabulary::ATTRIBUTE_VALUE, "v" + std::to_string(i), found);
	}
	auto write = [&](bool cdata)
	{
		std::ostringstream out;
		{
			FastInfosetWriter w(out, false, vocabulary);
			w.setExternalVocabulary("urn:v", vocabulary);
			w.startDocument();
			w.startElement("", "r", "r");
			if (cdata) w.startCDATA();
			for (int i: {1, 16, 17, 64, 65, 1040, 1041, 8256, 8257})
			{
				w.characters("c" + std::to_string(i));
				w.emptyElement("", "e", "e", attributes({{"a", ("v" + std::to_string(i)).c_str()}}));
			}
			if (cdata) w.endCDATA();
			w.endElement("", "r", "r");
			w.endDocument();
		}
		return toHex(out.str());
	};
	EXPECT_EQ(write(false), write(true));
}


TEST(WriterTest, AttributesWithANamespaceHaveAPrefix)
{
	// An unprefixed attribute has no namespace, so one with a namespace name
	// is written with a prefix: its own when that can mean the namespace,
	// one in scope, or a new one, never the default namespace.
	struct Name { const char* uri; const char* localName; const char* qname; };
	const struct
	{
		const char* what;
		const char* mappedPrefix;   // declared with startPrefixMapping when not null
		const char* mappedURI;
		Name element;
		Name attribute;
		std::string hex;
	}
	cases[] =
	{
		// 0 element, 1 attributes, 111000: 78; 110011 1 1: cf, "p" 00 70, "urn:p" 04 ...
		// 1111 000000, 00 1111 1 1: f0 3f, prefix and namespace index 2: 81 81, "e" 00 65
		// 0 11110 1 1: 7b, 81 81, "a" 00 61, value 40 31; ff, f0
		{"in the element's namespace", "p", "urn:p", {"urn:p", "e", "p:e"}, {"urn:p", "a", "p:a"},
			"78 cf 0070 04" + toHex("urn:p") + " f0 3f 81 81 0065 7b 81 81 0061 4031 ff f0"},
		// 110011 0 1: cd "urn:d"; cf "ns1" "urn:q"; f0; 00 1111 0 1: 3d, namespace 2: 81, "e"
		// attribute: 7b, prefix ns1 2: 81, namespace urn:q 3: 82
		{"no prefix and not in scope: a new one, while the default namespace stays", "", "urn:d", {"urn:d", "e", "e"}, {"urn:q", "a", ""},
			"78 cd 04" + toHex("urn:d") + " cf 02" + toHex("ns1") + "04" + toHex("urn:q") + " f0 3d 81 0065 7b 81 82 0061 4031 ff f0"},
		// cf "q" "urn:q"; f0; 00 1111 0 0: 3c "e"; 7b 81 81 "a"
		{"its own prefix, declared where it is not in scope", 0, 0, {"", "e", "e"}, {"urn:q", "a", "q:a"},
			"78 cf 0071 04" + toHex("urn:q") + " f0 3c 0065 7b 81 81 0061 4031 ff f0"},
		// ns1 before p: cf "ns1" "urn:q", cf "p" "urn:p"; f0; 3f 82 82 "e"; 7b 81 81 "a"
		{"its own prefix names the element's namespace: a new one", "p", "urn:p", {"urn:p", "e", "p:e"}, {"urn:q", "a", "p:a"},
			"78 cf 02" + toHex("ns1") + "04" + toHex("urn:q") + " cf 0070 04" + toHex("urn:p") + " f0 3f 82 82 0065 7b 81 81 0061 4031 ff f0"},
		// 0 1 1111 0 0: 7c "e"; 0 11110 0 0: 78, "x:a" 02 ...
		{"no namespace processing: the qualified name is the name", 0, 0, {"", "", "e"}, {"", "", "x:a"},
			"7c 0065 78 02" + toHex("x:a") + " 4031 ff f0"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.what);
		std::string expected = HEADER + NO_OPTIONS + c.hex;
		expected.erase(std::remove(expected.begin(), expected.end(), ' '), expected.end());
		EXPECT_EQ(expected, document([&](FastInfosetWriter& w)
		{
			AttributesImpl a;
			a.addAttribute(c.attribute.uri, c.attribute.localName, c.attribute.qname, "CDATA", "1");
			if (c.mappedPrefix) w.startPrefixMapping(c.mappedPrefix, c.mappedURI);
			w.emptyElement(c.element.uri, c.element.localName, c.element.qname, a);
		}));
	}
}


TEST(WriterTest, FullTablesOfTheDefaultWriterTakeStringsInFull)
{
	// The hash tables hold 18 other strings and 65520 chunks besides their
	// placeholders; what comes after goes out in full without entering the
	// table, so that it never turns into an index the reader lacks.
	std::ostringstream out;
	std::vector<std::string> expected;
	{
		FastInfosetWriter w(out);
		w.startDocument();
		w.startElement("", "r", "r");
		auto comment = [&](const std::string& text)
		{
			w.comment(text.data(), 0, static_cast<int>(text.size()));
			expected.push_back("comment " + text);
		};
		auto chunk = [&](const std::string& text)
		{
			w.characters(text);
			expected.push_back("characters " + text);
		};
		for (int i = 1; i <= 100; ++i) comment("c" + std::to_string(i));
		for (int i = 1; i <= 70000; ++i) chunk("t" + std::to_string(i));
		comment("c1");
		comment("c100");
		chunk("t1");
		chunk("t70000");
		w.endElement("", "r", "r");
		w.endDocument();
	}
	const std::string octets = toHex(out.str());
	// e2, 1 0000000: index 1; e2, 0 0 00 0011 and "c100": in full, not added;
	// 10 1 00000: chunk index 1; 10 0 0 00 10 00000011 and "t70000"; ff
	const std::string tail = "e280" "e203" + toHex("c100") + "a0" "8203" + toHex("t70000") + "ff";
	ASSERT_GT(octets.size(), tail.size());
	EXPECT_EQ(tail, octets.substr(octets.size() - tail.size()));
	std::vector<std::string> text;
	for (const std::string& line: parsed(out.str()))
	{
		if (line.compare(0, 8, "comment ") == 0 || line.compare(0, 11, "characters ") == 0) text.push_back(line);
	}
	EXPECT_EQ("", firstDifference(expected, text));
}


TEST(WriterTest, TablesStopAtTheFormatsLastIndex)
{
	// Map tables grow, but a document can refer to no index beyond 2^20.
	// Local names and attribute names past it go out in full; the names
	// after a name whose local name the table could not take keep the
	// reader's indexes. (Strings that are not names take the path of a full
	// hash table, above.)
	const int PER_ELEMENT = 64;
	const int COUNT = (1 << 20) + PER_ELEMENT;
	std::ostringstream out;
	{
		FastInfosetWriter w(out, false, DocumentVocabulary::VOC_MAP);
		w.startDocument();
		w.startElement("", "r", "r");
		AttributesImpl a;
		for (int i = 0; i < COUNT; i += PER_ELEMENT)
		{
			a.clear();
			for (int j = i; j < i + PER_ELEMENT; ++j)
			{
				const std::string n = std::to_string(j);
				a.addAttribute("", "a" + n, "a" + n, "CDATA", "v");
			}
			w.emptyElement("", "e", "e", a);
		}
		for (const char* name: {"fresh", "a7", "a7", "fresh", "a7", "e"}) w.emptyElement("", name, name);
		w.emptyElement("", "last", "last", attributes({{"a9", "v"}, {"a1048575", "v"}, {"b", "v"}}));
		w.endElement("", "r", "r");
		w.endDocument();
	}

	struct Checker: Ixor::XML::DefaultHandler
		/// Checks the attributes of the many elements e as they come, and
		/// keeps what follows them.
	{
		int next = 0;
		int wrong = 0;
		std::vector<std::string> tail;

		void startElement(const std::string&, const std::string& localName, const std::string&, const Ixor::XML::Attributes& attributes) override
		{
			if (localName == "e" && next < COUNT)
			{
				for (int i = 0; i < attributes.getLength(); ++i, ++next)
				{
					const std::string n = std::to_string(next);
					if (attributes.getLocalName(i) != "a" + n || attributes.getValue(i) != "v") ++wrong;
				}
				return;
			}
			std::string line = localName;
			for (int i = 0; i < attributes.getLength(); ++i) line += " " + attributes.getLocalName(i) + "=" + attributes.getValue(i);
			tail.push_back(line);
		}
	};
	Checker checker;
	FastInfosetParser parser;
	parser.setContentHandler(&checker);
	const std::string document = out.str();
	parser.parseMemoryNP(document.data(), document.size());
	EXPECT_EQ(COUNT, checker.next);
	EXPECT_EQ(0, checker.wrong);
	const std::vector<std::string> tail =
	{
		"r",   // reported first
		"fresh", "a7", "a7", "fresh", "a7", "e", "last a9=v a1048575=v b=v"
	};
	EXPECT_EQ(tail, checker.tail);
}


TEST(WriterTest, DeclarationsBeforeTheRootElementGoIntoTheHeader)
{
	// An XML parser reports notations and unparsed entities inside the
	// document type declaration, after comments and instructions may have
	// come: the header waits for the root element, and what came before it
	// keeps its order.
	const std::string publicId("-//N//EN");
	const std::string systemId("n.txt");
	auto declare = [&](FastInfosetWriter& w)
	{
		w.notationDecl("n", &publicId, &systemId);
		w.unparsedEntityDecl("pic", 0, "pic.png", "n");
	};
	enum Where { BEFORE_START, IN_THE_DTD, BEFORE_ROOT };
	auto events = [&](Where where)
	{
		return [&, where](FastInfosetWriter& w)
		{
			if (where == BEFORE_START) declare(w);
			w.startDocument();
			w.comment("first", 0, 5);
			w.startDTD("r", "", "r.dtd");
			if (where == IN_THE_DTD) declare(w);
			w.processingInstruction("in", "dtd");
			w.endDTD();
			w.processingInstruction("after", "dtd");
			if (where == BEFORE_ROOT) declare(w);
			w.startElement("", "r", "r", attributes({{"img", "pic"}}));
			w.endElement("", "r", "r");
			w.endDocument();
		};
	};
	const std::vector<std::string> expected =
	{
		"notation n public=-//N//EN system=n.txt",
		"unparsedEntity pic public=(null) system=pic.png notation=n",
		"startDocument",
		"comment first",
		"startDTD  public= system=r.dtd",
		"pi in dtd",
		"endDTD",
		"pi after dtd",
		"startElement {}r  {}img=pic",
		"endElement {}r ",
		"endDocument",
	};
	const std::string first = document(events(BEFORE_START), false);
	for (Where where: {BEFORE_START, IN_THE_DTD, BEFORE_ROOT})
	{
		SCOPED_TRACE(where);
		const std::string octets = document(events(where), false);
		EXPECT_EQ(first, octets);
		std::vector<std::string> lines = parsed(fromHex(octets), true);
		// Where the parser reports the declarations is its own business.
		std::stable_partition(lines.begin(), lines.end(), [](const std::string& line) { return line.compare(0, 8, "notation") == 0 || line.compare(0, 8, "unparsed") == 0; });
		EXPECT_EQ(expected, lines);
	}
	EXPECT_EQ("notationDecl() with the element r open: m", messageOf<FISException>([&]
	{
		document([](FastInfosetWriter& w) { w.startElement("", "r", "r"); w.notationDecl("m", 0, 0); });
	}));
}


TEST(WriterTest, XMLWithNotationsAndUnparsedEntitiesConverts)
{
	const std::string xml =
		"<?xml version='1.0'?>\n"
		"<!-- a comment before the declaration -->\n"
		"<!DOCTYPE catalog [\n"
		"  <!NOTATION gif PUBLIC '-//CompuServe//NOTATION GIF//EN' 'image/gif'>\n"
		"  <!NOTATION png SYSTEM 'image/png'>\n"
		"  <!ENTITY logo SYSTEM 'logo.gif' NDATA gif>\n"
		"  <!ENTITY photo PUBLIC '-//Photo//EN' 'photo.png' NDATA png>\n"
		"  <!ATTLIST item picture ENTITY #IMPLIED>\n"
		"]>\n"
		"<catalog><item picture='logo'/><item picture='photo'/></catalog>\n";
	std::istringstream in(xml);
	std::ostringstream fi;
	Converter::convertToFIS(in, fi, 0, 16);
	std::vector<std::string> events = parsed(fi.str(), true);
	std::stable_partition(events.begin(), events.end(), [](const std::string& line) { return line.compare(0, 8, "notation") == 0 || line.compare(0, 8, "unparsed") == 0; });
	const std::vector<std::string> expected =
	{
		"notation gif public=-//CompuServe//NOTATION GIF//EN system=image/gif",
		"notation png public=(null) system=image/png",
		"unparsedEntity logo public=(null) system=logo.gif notation=gif",
		"unparsedEntity photo public=-//Photo//EN system=photo.png notation=png",
		"startDocument",
		"comment  a comment before the declaration ",
		"startDTD  public= system=",
		"endDTD",
	};
	events.resize(expected.size());
	EXPECT_EQ(expected, events);
}


TEST(WriterTest, WritersFollowOneAnotherOnOneStream)
{
	// Each writer leaves its whole document on the stream by endDocument()
	// and nothing more when it goes: the next one writes right behind it.
	auto write = [](std::ostream& out, int which)
	{
		FastInfosetWriter w(out);
		w.startDocument();
		if (which == 1) w.processingInstruction("only", "a prolog");   // no element: the header waits for endDocument()
		else w.emptyElement("", "d" + std::to_string(which), "", attributes({{"n", "v"}}));
		w.endDocument();
	};
	std::stringstream stream;
	std::string separate[3];
	for (int i = 0; i < 3; ++i)
	{
		write(stream, i);
		std::ostringstream alone;
		write(alone, i);
		separate[i] = alone.str();
	}
	EXPECT_EQ(separate[0] + separate[1] + separate[2], stream.str());
	EXPECT_EQ((std::vector<std::string>{"startDocument", "pi only a prolog", "endDocument"}), parsed(separate[1], true));
	EXPECT_EQ((std::vector<std::string>{"startDocument", "startElement {}d2  {}n=v", "endElement {}d2 ", "endDocument"}), parsed(separate[2], true));
}


TEST(WriterTest, ARestartedWriterWritesWhatANewWriterWrites)
{
	// Documents that share some names and strings and differ in others, one
	// with a prefix made up for it, one with the prolog held back for the
	// header; each setting of a writer. A writer restarted for every
	// document, even after one it left unfinished, writes the octets of a
	// new writer with the same settings.
	const std::vector<std::string> documents =
	{
		"<r a='1'><x>text</x><x>text</x>\n</r>",
		"<?p d?><!--c--><r a='2' b='1'><y>text</y><z xmlns='urn:z'>other</z></r>",
		"<q:r xmlns:q='urn:q' q:a='1'><x>text</x></q:r>",
		"<r a='1'><x>text</x><x>text</x>\n</r>",
	};
	DocumentVocabulary initial(DocumentVocabulary::VOC_MAP);
	bool found = false;
	initial.index(DocumentVocabulary::LOCAL_NAME, "x", found);
	initial.index(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, "text", found);
	DocumentVocabulary external("urn:ext", DocumentVocabulary::VOC_MAP);
	external.index(DocumentVocabulary::ATTRIBUTE_VALUE, "1", found);
	const std::vector<std::pair<const char*, std::function<FastInfosetWriter*(std::ostream&)>>> setups =
	{
		{"hash tables", [](std::ostream& out) { return new FastInfosetWriter(out); }},
		{"map tables and a declaration", [](std::ostream& out) { return new FastInfosetWriter(out, true, DocumentVocabulary::VOC_MAP); }},
		{"an initial vocabulary", [&](std::ostream& out) { return new FastInfosetWriter(out, false, initial); }},
		{"vector tables", [](std::ostream& out) { return new FastInfosetWriter(out, false, DocumentVocabulary(DocumentVocabulary::VOC_VECTOR)); }},
		{"an external vocabulary and a short indexed length", [&](std::ostream& out)
			{
				FastInfosetWriter* pWriter = new FastInfosetWriter(out, false, DocumentVocabulary::VOC_MAP);
				pWriter->setExternalVocabulary("urn:ext", external);
				pWriter->setMaxIndexedStringLength(3);
				return pWriter;
			}},
	};
	// How the document before the first one was left: unfinished in each
	// state the writer tracks, or ended.
	const std::vector<std::pair<const char*, std::function<void(FastInfosetWriter&)>>> before =
	{
		{"an open element", [](FastInfosetWriter& w)
			{
				w.startDocument();
				w.startElement("urn:u", "unfinished", "u:unfinished", attributes({{"a", "abandoned value"}}));
				w.characters("abandoned");
			}},
		{"a CDATA section with typed values", [](FastInfosetWriter& w)
			{
				w.startDocument();
				w.startElement("", "r", "r");
				w.encodedData(7);
				w.startCDATA();
			}},
		{"the prolog, inside the document type declaration", [](FastInfosetWriter& w)
			{
				w.startDocument();
				w.processingInstruction("held", "back");
				w.notationDecl("n", 0, 0);
				w.startDTD("r", "", "r.dtd");
			}},
		{"an ended document", [](FastInfosetWriter& w)
			{
				w.startDocument();
				w.emptyElement("urn:e", "ended", "");
				w.endDocument();
			}},
	};
	for (const auto& setup: setups)
	for (const auto& left: before)
	{
		SCOPED_TRACE(setup.first);
		SCOPED_TRACE(left.first);
		std::ostringstream unused;
		std::unique_ptr<FastInfosetWriter> pRestarted(setup.second(unused));
		left.second(*pRestarted);
		for (const std::string& xml: documents)
		{
			SCOPED_TRACE(xml);
			std::ostringstream fresh;
			{
				std::unique_ptr<FastInfosetWriter> pNew(setup.second(fresh));
				std::istringstream in(xml);
				Converter::convertToFIS(in, *pNew);
			}
			std::ostringstream restarted;
			pRestarted->reset(restarted);
			std::istringstream in(xml);
			Converter::convertToFIS(in, *pRestarted);
			EXPECT_EQ(toHex(fresh.str()), toHex(restarted.str()));
		}
	}
}
