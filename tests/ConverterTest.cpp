#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/Utility.h"
#include "EventRecorder.h"
#include "TestSupport.h"
#include "Poco/DirectoryIterator.h"
#include "Poco/SAX/AttributesImpl.h"
#include "Poco/SAX/DefaultHandler.h"
#include "Poco/SAX/SAXException.h"
#include "Poco/XML/XMLWriter.h"
#include <gtest/gtest.h>
#include <fstream>
#include <functional>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using Ixor::XML::XMLWriter;


namespace {


std::vector<std::string> xmlEvents(const std::string& xml, bool stripWhitespace, std::string* pDoctypeName = 0)
	/// The comparable events of XML text; the XML writer does not print the
	/// DTD's content nor comments, so those are left out.
{
	std::vector<std::string> kept;
	bool inDTD = false;
	for (const std::string& line: comparableXMLEvents(xml, stripWhitespace, pDoctypeName))
	{
		if (line.compare(0, 8, "startDTD") == 0) inDTD = true;
		if (!inDTD && line.compare(0, 7, "comment") != 0) kept.push_back(line);
		if (line == "endDTD") inDTD = false;
	}
	return kept;
}


std::string toXML(const std::string& fi, int options = 0)
{
	std::istringstream in(fi);
	std::ostringstream out;
	Converter::convertToXML(in, out, options);
	return out.str();
}


typedef std::function<void(FastInfosetWriter&)> Events;


std::string written(const Events& events, const std::vector<std::pair<std::string, std::string>>& patches = {})
	/// A document written straight from events, for what XML text cannot
	/// give the writer. Each patch then replaces a placeholder of the same
	/// length in the octets, for names that the writer would not take.
{
	std::ostringstream out;
	{
		FastInfosetWriter writer(out);
		events(writer);
	}
	std::string fi = out.str();
	for (const auto& patch: patches)
	{
		EXPECT_EQ(patch.first.size(), patch.second.size());
		for (std::size_t at = fi.find(patch.first); at != std::string::npos; at = fi.find(patch.first, at + 1))
			fi.replace(at, patch.first.size(), patch.second);
	}
	return fi;
}


Events inRoot(const std::function<void(FastInfosetWriter&)>& content)
	/// A document of one element "r" around the content.
{
	return [content](FastInfosetWriter& w)
	{
		w.startDocument();
		w.startElement("", "r", "");
		content(w);
		w.endElement("", "r", "");
		w.endDocument();
	};
}


Events rootWithAttributes(const std::vector<std::pair<std::string, std::string>>& attributes)
{
	return [attributes](FastInfosetWriter& w)
	{
		Ixor::XML::AttributesImpl list;
		for (const auto& attribute: attributes) list.addAttribute("", attribute.first, "", "CDATA", attribute.second);
		w.startDocument();
		w.startElement("", "r", "", list);
		w.endElement("", "r", "");
		w.endDocument();
	};
}


Events rootDeclaring(const std::vector<std::pair<std::string, std::string>>& declarations, const std::string& uri = "", const std::string& qname = "r")
	/// A document of one element with the namespace declarations.
{
	return [=](FastInfosetWriter& w)
	{
		const std::string localName = qname.substr(qname.find(':') + 1);
		const std::string reported = qname == localName ? std::string() : qname;
		w.startDocument();
		for (const auto& declaration: declarations) w.startPrefixMapping(declaration.first, declaration.second);
		w.startElement(uri, localName, reported);
		w.endElement(uri, localName, reported);
		w.endDocument();
	};
}


} // namespace


TEST(ConverterTest, SamplesComeBackAsXMLThatTheHostParserReads)
{
	for (Poco::DirectoryIterator it{std::string(FASTINFOSET_TEST_DATA)}, end; it != end; ++it)
	{
		if (it.path().getExtension() != "xml") continue;
		const std::string xml = fileContent(it.path().toString());
		std::string doctype;
		const std::vector<std::string> original = xmlEvents(xml, false, &doctype);
		for (int options: {0, 1, 128})
		{
			SCOPED_TRACE(it.name() + " options " + std::to_string(options));
			std::istringstream xmlIn(xml);
			std::ostringstream fiOut;
			Converter::convertToFIS(xmlIn, fiOut, options, 16);
			const std::string back = toXML(fiOut.str());
			std::string backDoctype;
			const std::vector<std::string> backEvents = xmlEvents(back, false, &backDoctype);
			EXPECT_EQ("", firstDifference(options ? xmlEvents(xml, true) : original, backEvents));
			EXPECT_EQ(doctype, backDoctype);
		}
	}
}


TEST(ConverterTest, WhitespaceIsDroppedOnlyWhenAsked)
{
	const std::string xml = "<a>\n  <b>x</b>\n</a>";
	std::string back[3];
	int i = 0;
	for (int options: {0, 1, 128})
	{
		std::istringstream in(xml);
		std::ostringstream out;
		Converter::convertToFIS(in, out, options, 16);
		back[i++] = toXML(out.str());
	}
	EXPECT_EQ("<a>\n  <b>x</b>\n</a>", back[0]);
	EXPECT_EQ("<a><b>x</b></a>", back[1]);
	EXPECT_EQ(back[1], back[2]);
}


TEST(ConverterTest, TextBetweenTwoTagsIsOneChunk)
{
	// The host parser cuts text at references and line ends; the chunks
	// that reach the document are the text between two tags, so that
	// repeated indentation repeats as an index. CDATA sections stay apart.
	const struct { const char* xml; std::vector<std::string> chunks; } cases[] =
	{
		{"<r>a&amp;b&#x41;c</r>", {"characters a&bAc"}},
		{"<r>\n\t<x/>\n\t<x/>\n</r>", {"characters \n\t", "characters \n\t", "characters \n"}},
		{"<r>a<![CDATA[b\nc]]>d</r>", {"characters a", "characters b\nc", "characters d"}},
		{"<r>a<!--c-->b<?p?>c</r>", {"characters a", "characters b", "characters c"}},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.xml);
		std::istringstream in(c.xml);
		std::ostringstream out;
		Converter::convertToFIS(in, out);
		EventRecorder recorder;
		FastInfosetParser parser;
		recorder.attachTo(parser);
		parser.parseMemoryNP(out.str().data(), out.str().size());
		std::vector<std::string> chunks;
		for (const std::string& line: recorder.lines)
		{
			if (line.compare(0, 11, "characters ") == 0) chunks.push_back(line);
		}
		EXPECT_EQ(c.chunks, chunks);
	}
}


TEST(ConverterTest, StringsUpToTheDefaultLengthRepeatAsIndexes)
{
	const std::string indexed(FastInfosetWriter::DEFAULT_MAX_INDEXED_STRING_LENGTH, 'x');
	const std::string longer = indexed + "x";
	for (const std::string& text: {indexed, longer})
	{
		std::istringstream in("<r><a>" + text + "</a><a>" + text + "</a></r>");
		std::ostringstream out;
		Converter::convertToFIS(in, out);
		// Once in full; the second time as an index, or in full again.
		const std::size_t expected = text == indexed ? 1 : 2;
		std::size_t count = 0;
		for (std::size_t at = out.str().find(text); at != std::string::npos; at = out.str().find(text, at + text.size())) ++count;
		EXPECT_EQ(expected, count) << text.size();
	}
}


TEST(ConverterTest, UtilityShortcutsUseTheirFixedSettings)
{
	const std::string xml = "<a><b>repeated</b><b>repeated</b></a>";
	std::istringstream in(xml);
	std::ostringstream fi;
	Utility::convertToFIS(in, fi, 0);
	// Nothing but the empty string is indexed: both chunks are literals.
	std::size_t literals = 0;
	for (std::size_t pos = 0; (pos = fi.str().find("repeated", pos)) != std::string::npos; ++pos) ++literals;
	EXPECT_EQ(2u, literals);
	std::istringstream fiIn(fi.str());
	std::ostringstream back;
	Utility::convertToXML(fiIn, back);
	EXPECT_EQ(xml, back.str());
}


TEST(ConverterTest, BadInputRaisesTheComponentsExceptions)
{
	std::istringstream notXML("<a><b></a>");
	std::ostringstream out;
	EXPECT_THROW(Converter::convertToFIS(notXML, out, 0, 16), Ixor::XML::SAXParseException);
	std::istringstream notFI("<a/>");
	EXPECT_EQ("Not a valid Fast Infoset document (invalid header) (at octet 2)", messageOf<FISException>([&] { Converter::convertToXML(notFI, out, 0); }));
}


TEST(ConverterTest, TheLastLineEndsOnlyWhenAsked)
{
	const std::string fi = written(inRoot([](FastInfosetWriter& w) { w.startElement("", "c", ""); w.endElement("", "c", ""); }));
	struct Case { int options; const char* expected; };
	const Case CASES[] =
	{
		{0, "<r><c/></r>"},
		{Converter::END_WITH_NEWLINE, "<r><c/></r>\n"},
		{XMLWriter::PRETTY_PRINT, "<r>\n\t<c/>\n</r>\n"},
		{XMLWriter::PRETTY_PRINT | Converter::END_WITH_NEWLINE, "<r>\n\t<c/>\n</r>\n"},
		{XMLWriter::WRITE_XML_DECLARATION | Converter::END_WITH_NEWLINE, "<?xml version=\"1.0\" encoding=\"UTF-8\"?><r><c/></r>\n"},
	};
	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.options);
		EXPECT_EQ(c.expected, toXML(fi, c.options));
	}
}


TEST(ConverterTest, DocumentTypeDeclarationIsWrittenWhereXMLWantsIt)
{
	// The format keeps no name for the declaration, and the parser reports
	// notations before the document starts.
	const std::string system = "image/gif";
	const std::string publicId = "-//pub";
	const std::string badPublicId = "-//\"pub";
	const std::string badSystem = "a\"b";
	struct Case
	{
		const char* name;
		Events events;
		std::string expected;
	};
	const Case CASES[] =
	{
		{"declaration, instruction inside and comment after it", [](FastInfosetWriter& w)
			{
				w.startDocument();
				w.startDTD("", "", "root.dtd");
				w.processingInstruction("inside", "dtd");
				w.endDTD();
				w.comment("after", 0, 5);
				w.startElement("urn:x", "root", "p:root");
				w.endElement("urn:x", "root", "p:root");
				w.endDocument();
			},
			"<?inside dtd?><!DOCTYPE p:root SYSTEM \"root.dtd\"><!--after--><p:root xmlns:p=\"urn:x\"/>"},
		{"notations and entities without declaration; those XML cannot hold are left out", [&](FastInfosetWriter& w)
			{
				w.notationDecl("gif", 0, &system);
				w.notationDecl("png", &publicId, 0);
				w.notationDecl("jpeg", &badPublicId, 0);
				w.notationDecl("tiff", &badPublicId, &system);
				w.unparsedEntityDecl("logo", 0, "logo.gif", "gif");
				w.unparsedEntityDecl("quoted", 0, badSystem, "gif");
				w.startDocument();
				w.startElement("", "root", "");
				w.endElement("", "root", "");
				w.endDocument();
			},
			"<!DOCTYPE root [<!NOTATION gif SYSTEM \"image/gif\"><!NOTATION png PUBLIC \"-//pub\">"
			"<!NOTATION tiff SYSTEM \"image/gif\"><!ENTITY logo SYSTEM \"logo.gif\" NDATA gif>]><root/>"},
		{"public identifier alone; late declaration", [&](FastInfosetWriter& w)
			{
				w.startDocument();
				w.startDTD("", publicId, "");
				w.endDTD();
				w.startElement("", "root", "");
				w.startDTD("", "", "late.dtd");
				w.endDTD();
				w.endElement("", "root", "");
				w.endDocument();
			},
			"<!DOCTYPE root><root/>"},
		{"system identifier with a quote", [&](FastInfosetWriter& w)
			{
				w.startDocument();
				w.startDTD("", publicId, badSystem);
				w.endDTD();
				w.startElement("", "root", "");
				w.endElement("", "root", "");
				w.endDocument();
			},
			"<!DOCTYPE root><root/>"},
	};
	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.name);
		const std::string xml = toXML(written(c.events));
		EXPECT_EQ(c.expected, xml);
		EXPECT_NO_THROW(xmlEvents(xml, false));
	}
}


TEST(ConverterTest, TextThatXMLWouldChangeIsWrittenSoThatItReadsBack)
{
	struct Case
	{
		const char* name;
		Events events;
		std::string expected;
		std::string readBack;   // the text of the element, as the host parser reports it
	};
	const Case CASES[] =
	{
		{"carriage returns in text", inRoot([](FastInfosetWriter& w) { w.characters("a\r\nb\r"); }),
			"<r>a&#xD;\nb&#xD;</r>", "a\r\nb\r"},
		{"\"]]>\" and a carriage return inside a CDATA section", inRoot([](FastInfosetWriter& w)
			{
				w.startCDATA();
				w.characters("x]]>y]]]>z\r");
				w.endCDATA();
			}),
			"<r><![CDATA[x]]]]><![CDATA[>y]]]]]><![CDATA[>z]]>&#xD;<![CDATA[]]></r>", "x]]>y]]]>z\r"},
		{"markup characters and white space in attribute values", rootWithAttributes({{"a", "<&\"'\r\n\t"}}),
			"<r a=\"&lt;&amp;&quot;'&#xD;&#xA;&#x9;\"/>", ""},
	};
	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.name);
		const std::string xml = toXML(written(c.events));
		EXPECT_EQ(c.expected, xml);
		std::string text;
		for (const std::string& line: xmlEvents(xml, false))
		{
			if (line.compare(0, 11, "characters ") == 0) text += line.substr(11);
		}
		EXPECT_EQ(c.readBack, text);
	}
}


TEST(ConverterTest, AnElementWithoutNamespaceInsideADefaultOneKeepsNone)
{
	const std::string xml = toXML(written([](FastInfosetWriter& w)
		{
			w.startDocument();
			w.startPrefixMapping("", "urn:d");
			w.startElement("urn:d", "r", "");
			w.startElement("", "c", "");
			w.endElement("", "c", "");
			w.endElement("urn:d", "r", "");
			w.endPrefixMapping("");
			w.endDocument();
		}));
	EXPECT_EQ("<r xmlns=\"urn:d\"><c xmlns=\"\"/></r>", xml);
	const std::vector<std::string> events = xmlEvents(xml, false);
	EXPECT_NE(events.end(), std::find(events.begin(), events.end(), "startElement {}c "));
}


TEST(ConverterTest, DocumentsThatXMLCannotHoldAreRefused)
{
	struct Case
	{
		const char* name;
		Events events;
		std::vector<std::pair<std::string, std::string>> patches;
		std::string fault;   // the message's argument, or its start
	};
	const Case CASES[] =
	{
		{"element name", inRoot([](FastInfosetWriter& w) { w.startElement("", "QQQ", ""); w.endElement("", "QQQ", ""); }),
			{{"QQQ", "1ab"}}, "element name \"1ab\" is not an XML name"},
		{"element name with a space", inRoot([](FastInfosetWriter& w) { w.startElement("", "QQQ", ""); w.endElement("", "QQQ", ""); }),
			{{"QQQ", "a b"}}, "element name \"a b\" is not an XML name"},
		{"attribute name", rootWithAttributes({{"QQQ", "v"}}), {{"QQQ", "a<b"}}, "attribute name \"a<b\" is not an XML name"},
		{"prefix", rootDeclaring({{"QQ", "urn:x"}}, "urn:x", "QQ:r"), {{"QQ", "-q"}}, "prefix \"-q\" is not an XML name"},
		{"instruction target", inRoot([](FastInfosetWriter& w) { w.processingInstruction("QQQ", "data"); }),
			{{"QQQ", "x y"}}, "processing-instruction target \"x y\" is not an XML name"},
		{"instruction named xml", inRoot([](FastInfosetWriter& w) { w.processingInstruction("QQQ", "data"); }),
			{{"QQQ", "XmL"}}, "processing-instruction target \"XmL\" is reserved"},
		{"instruction data with \"?>\"", inRoot([](FastInfosetWriter& w) { w.processingInstruction("pi", "a?>b"); }),
			{}, "processing-instruction data contains \"?>\""},
		{"comment with \"--\"", inRoot([](FastInfosetWriter& w) { w.comment("a--b", 0, 4); }), {}, "comment contains \"--\": \"a--b\""},
		{"comment ending in \"-\"", inRoot([](FastInfosetWriter& w) { w.comment("ab-", 0, 3); }), {}, "comment ends with \"-\""},
		{"control character in text", inRoot([](FastInfosetWriter& w) { w.characters("a\x01z"); }),
			{}, "text holds a character XML does not allow: \"\\x01z\""},
		{"control character after words of text", inRoot([](FastInfosetWriter& w) { w.characters("plain text, \x7f and \xc3\xa9 allowed, a control \x01" "character here"); }),
			{}, "text holds a character XML does not allow: \"\\x01character here\""},
		{"U+FFFE in text", inRoot([](FastInfosetWriter& w) { w.characters("a\xEF\xBF\xBE"); }),
			{}, "text holds a character XML does not allow: \"\\xEF\\xBF\\xBE\""},
		{"octets that are not UTF-8", inRoot([](FastInfosetWriter& w) { w.characters("a\xC3("); }),
			{}, "text holds a character XML does not allow"},
		{"control character in an attribute value", rootWithAttributes({{"a", "\x02"}}), {}, "an attribute value holds a character"},
		{"control character in a comment", inRoot([](FastInfosetWriter& w) { w.comment("\x1b[2J", 0, 4); }), {}, "a comment holds a character"},
		{"control character in a CDATA section", inRoot([](FastInfosetWriter& w) { w.startCDATA(); w.characters("\x0c"); w.endCDATA(); }),
			{}, "text holds a character"},
		{"the same attribute twice", rootWithAttributes({{"QQa", "1"}, {"QQb", "2"}}), {{"QQb", "QQa"}}, "attribute \"QQa\" appears twice"},
		{"the same prefix declared twice", rootDeclaring({{"QQa", "urn:a"}, {"QQb", "urn:b"}}), {{"QQb", "QQa"}}, "prefix \"QQa\" is declared twice on one element"},
		{"a prefix with two namespaces", rootDeclaring({{"p", "urn:a"}}, "urn:b", "p:r"), {}, "prefix \"p\" names two namespaces on element \"p:r\""},
		{"the prefix xmlns declared", rootDeclaring({{"QQQQQ", "urn:a"}}), {{"QQQQQ", "xmlns"}}, "the prefix \"xmlns\" cannot be declared"},
		{"the prefix xml bound to another namespace", rootDeclaring({{"QQQ", "urn:a"}}), {{"QQQ", "xml"}}, "only the prefix \"xml\" names the XML namespace"},
		{"a prefix undeclared", rootDeclaring({{"p", ""}}), {}, "prefix \"p\" is declared without namespace"},
		{"an element in the namespace of declarations", rootDeclaring({}, "http://www.w3.org/2000/xmlns/"), {}, "the namespace \"http://www.w3.org/2000/xmlns/\" cannot be declared"},
		{"an attribute named xmlns", rootWithAttributes({{"QQQQQ", "urn:a"}}), {{"QQQQQ", "xmlns"}},
			"an attribute named \"xmlns\" would be read as a namespace declaration"},
		{"an element without namespace that declares a default one", [](FastInfosetWriter& w)
			{
				w.startDocument();
				w.startPrefixMapping("", "urn:d");
				w.startElement("urn:d", "r", "");
				w.startPrefixMapping("", "urn:e");
				w.startElement("", "c", "");
				w.endElement("", "c", "");
				w.endElement("urn:d", "r", "");
				w.endDocument();
			},
			{}, "element \"c\" has no namespace but declares a default namespace"},
		// The writer refuses a second root: <r><s/></r> becomes <r/><s/>.
		{"a second root element", inRoot([](FastInfosetWriter& w) { w.startElement("", "s", ""); w.endElement("", "s", ""); }),
			{{std::string("\x3C\x00\x72\x3C\x00\x73\xFF\xF0", 8), std::string("\x3C\x00\x72\xF0\x3C\x00\x73\xFF", 8)}},
			"the document has a second root element \"s\""},
		{"no root element", [](FastInfosetWriter& w)
			{
				w.startDocument();
				w.startDTD("", "", "root.dtd");
				w.endDTD();
				w.comment("c", 0, 1);
				w.endDocument();
			},
			{}, "the document has no root element"},
	};
	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.name);
		std::istringstream in(written(c.events, c.patches));
		std::ostringstream out;
		const std::string message = messageOf<FISException>([&] { Converter::convertToXML(in, out, 0); });
		const std::string expected = "Cannot be written as well-formed XML: " + c.fault;
		EXPECT_EQ(expected, message.substr(0, expected.size()));
	}
}


TEST(ConverterTest, ACallersParserKeepsItsSettingsAndHandlers)
{
	const std::string fi = written(inRoot([](FastInfosetWriter& w)
		{
			w.startElement("", "c", "");
			w.endElement("", "c", "");
		}));
	Ixor::XML::DefaultHandler handler;
	FastInfosetParser parser;
	parser.setContentHandler(&handler);
	parser.setMaxElementDepth(1);
	std::istringstream deep(fi);
	std::ostringstream out;
	EXPECT_EQ("Maximum element depth exceeded", messageOf<FISParseException>([&] { Converter::convertToXML(parser, deep, out, 0); }).substr(0, 30));
	EXPECT_EQ(&handler, parser.getContentHandler());

	parser.setMaxElementDepth(2);
	std::istringstream in(fi);
	std::ostringstream xml;
	Converter::convertToXML(parser, in, xml, 0);
	EXPECT_EQ("<r><c/></r>", xml.str());
	EXPECT_EQ(&handler, parser.getContentHandler());
	EXPECT_EQ(nullptr, parser.getDTDHandler());
}
