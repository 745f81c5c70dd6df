#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "EventRecorder.h"
#include "Reading.h"
#include "TestSupport.h"
#include "Poco/SAX/AttributesImpl.h"
#include <gtest/gtest.h>
#include <fstream>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using Ixor::XML::XMLReader;


namespace {


std::vector<std::string> dataFiles()
{
	return xmlFilesIn(FASTINFOSET_TEST_DATA);
}


template <class Handler>
void parseXMLFile(const std::string& path, Handler& handler, bool stripWhitespace = false)
	/// Feeds the events of an XML file to a recorder or a writer.
{
	std::ifstream in(path, std::ios::binary);
	parseXML(in, &handler, &handler, &handler, stripWhitespace);
}


EventRecorder::Options comparable()
{
	EventRecorder::Options options;
	options.comparable = true;
	return options;
}


std::string written(const std::function<void(FastInfosetWriter&)>& events)
	/// The document of the events.
{
	return writeDocument([&](FastInfosetWriter& writer)
	{
		writer.startDocument();
		events(writer);
		writer.endDocument();
	});
}


std::vector<std::string> parsed(const std::string& document, bool typed = true)
{
	EventRecorder recorder;
	FastInfosetParser parser;
	if (typed) recorder.attachTo(parser);
	else recorder.attachPlainTo(parser);
	parser.parseMemoryNP(document.data(), document.size());
	return recorder.lines;
}


} // namespace


TEST(RoundTripTest, DataFilesKeepTheirEventsThroughWriterAndParser)
{
	const std::vector<std::string> files = dataFiles();
	ASSERT_GE(files.size(), 5u);
	for (const std::string& path: files)
	{
		for (bool strip: {false, true})
		{
			SCOPED_TRACE(path + (strip ? " without ignorable whitespace" : ""));
			EventRecorder original(comparable());
			parseXMLFile(path, original, strip);

			std::ostringstream fi;
			{
				FastInfosetWriter writer(fi, false, DocumentVocabulary::VOC_HASH);
				parseXMLFile(path, writer, strip);
			}
			EventRecorder decoded(comparable());
			FastInfosetParser parser;
			decoded.attachTo(parser);
			const std::string octets = fi.str();
			parser.parseMemoryNP(octets.data(), octets.size());
			EXPECT_EQ("", firstDifference(original.lines, decoded.lines));
			EXPECT_LT(octets.size(), std::ifstream(path, std::ios::binary | std::ios::ate).tellg());
		}
	}
}


TEST(RoundTripTest, TheParserReportsWhatTheHostParserReports)
{
	// The host's parser with namespace prefixes off reports a stale
	// namespace name for an unprefixed element after a prefixed one; with
	// them on it is right, and what it reports then, without qualified
	// names, is what is right with them off.
	for (const std::string& path: dataFiles())
	{
		std::ifstream xml(path, std::ios::binary);
		std::ostringstream fi;
		Converter::convertToFIS(xml, fi, 0, 16);
		const std::string document = fi.str();
		for (bool prefixes: {true, false})
		{
			SCOPED_TRACE(path + (prefixes ? " with namespace prefixes" : " without namespace prefixes"));
			EventRecorder::Options options;
			options.comparableText = true;
			options.blankQualifiedNames = !prefixes;
			EventRecorder expected(options);
			parseXMLFile(path, expected);
			options.blankQualifiedNames = false;
			EventRecorder actual(options);
			FastInfosetParser parser;
			parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, prefixes);
			actual.attachTo(parser);
			parser.parseMemoryNP(document.data(), document.size());
			EXPECT_EQ("", firstDifference(expected.lines, actual.lines));
			EXPECT_GT(expected.lines.size(), 20u);
		}
	}
}


TEST(RoundTripTest, StructureAndDeclarationsComeBackAsWritten)
{
	const std::string document = writeDocument([](FastInfosetWriter& w)
	{
		const std::string publicId("-//N//EN");
		const std::string systemId("n.txt");
		w.notationDecl("n", &publicId, &systemId);
		w.notationDecl("m", 0, &systemId);
		w.unparsedEntityDecl("pic", 0, "pic.png", "n");
		w.unparsedEntityDecl("doc", &publicId, "doc.txt", "m");
		w.startDocument();
		w.startDTD("root", "", "root.dtd");
		w.processingInstruction("inside", "the DTD");
		w.endDTD();
		w.comment("before", 0, 6);
		w.startPrefixMapping("", "urn:default");
		w.startPrefixMapping("b", "urn:b");
		w.startPrefixMapping("a", "urn:a");
		Ixor::XML::AttributesImpl attributes;
		attributes.addAttribute("urn:a", "x", "a:x", "CDATA", "1");
		attributes.addAttribute("", "y", "y", "CDATA", "");
		w.startElement("urn:default", "root", "root", attributes);
		w.startElement("urn:generated", "child", "");
		w.characters("text");
		w.startCDATA();
		w.characters("a < b");
		w.endCDATA();
		w.processingInstruction("target", "data");
		w.endElement("urn:generated", "child", "");
		w.emptyElement("urn:b", "leaf", "b:leaf");
		w.endElement("urn:default", "root", "root");
		w.endPrefixMapping("a");
		w.endPrefixMapping("b");
		w.endPrefixMapping("");
		w.endDocument();
	});
	const std::vector<std::string> expected =
	{
		"notation n public=-//N//EN system=n.txt",
		"notation m public=(null) system=n.txt",
		"unparsedEntity pic public=(null) system=pic.png notation=n",
		"unparsedEntity doc public=-//N//EN system=doc.txt notation=m",
		"startDocument",
		"startDTD  public= system=root.dtd",
		"pi inside the DTD",
		"endDTD",
		"comment before",
		"startPrefixMapping =urn:default",
		"startPrefixMapping a=urn:a",
		"startPrefixMapping b=urn:b",
		"startElement {urn:default}root root {urn:a}x[a:x|CDATA]=1 {}y[y|CDATA]=",
		"startPrefixMapping ns1=urn:generated",
		"startElement {urn:generated}child ns1:child",
		"characters text",
		"startCDATA",
		"characters a < b",
		"endCDATA",
		"pi target data",
		"endElement {urn:generated}child ns1:child",
		"endPrefixMapping ns1",
		// The generated prefix stays declared in the parent's context, so
		// the next sibling declares it again.
		"startPrefixMapping ns1=urn:generated",
		"startElement {urn:b}leaf b:leaf",
		"endElement {urn:b}leaf b:leaf",
		"endPrefixMapping ns1",
		// Each element's own declarations end after it, last declared first.
		"endElement {urn:default}root root",
		"endPrefixMapping b",
		"endPrefixMapping a",
		"endPrefixMapping ",
		"endDocument",
	};
	EXPECT_EQ(expected, parsed(document));
}


TEST(RoundTripTest, TypedValuesArriveTypedOrAsText)
{
	Ixor::UUID uuid("6ba7b810-9dad-11d1-80b4-00c04fd430c8");
	const std::string document = written([&](FastInfosetWriter& w)
	{
		w.startElement("", "r", "r");
		w.encodedData(short(-32768)); w.encodedData(short(32767));
		w.startElement("", "i", "i"); w.encodedData(-2147483647 - 1); w.encodedData(2147483647); w.endElement("", "i", "i");
		w.startElement("", "l", "l"); w.encodedData(long(-9223372036854775807L - 1)); w.endElement("", "l", "l");
		w.startElement("", "b", "b"); w.encodedData(true); w.encodedData(false); w.encodedData(true); w.endElement("", "b", "b");
		w.startElement("", "f", "f"); w.encodedData(1.5f); w.encodedData(0.0f); w.endElement("", "f", "f");
		w.startElement("", "d", "d"); w.encodedData(-2.25); w.endElement("", "d", "d");
		w.startElement("", "u", "u"); w.encodedData(uuid); w.endElement("", "u", "u");
		w.startElement("", "x", "x"); w.binaryData("\x00\xff\x10", 3); w.endElement("", "x", "x");
		w.endElement("", "r", "r");
	});
	const std::vector<std::string> typed =
	{
		"startDocument", "startElement {}r r", "short -32768", "short 32767",
		"startElement {}i i", "int -2147483648", "int 2147483647", "endElement {}i i",
		"startElement {}l l", "long -9223372036854775808", "endElement {}l l",
		"startElement {}b b", "bool true", "bool false", "bool true", "endElement {}b b",
		"startElement {}f f", "float 1.5", "float 0", "endElement {}f f",
		"startElement {}d d", "double -2.25", "endElement {}d d",
		"startElement {}u u", "uuid 6ba7b810-9dad-11d1-80b4-00c04fd430c8", "endElement {}u u",
		"startElement {}x x", "binaryData 00FF10", "endElement {}x x",
		"endElement {}r r", "endDocument",
	};
	EXPECT_EQ(typed, parsed(document));

	const std::vector<std::string> text = parsed(document, false);
	const std::vector<std::string> expectedText =
	{
		"startDocument", "startElement {}r r", "characters -32768 32767",
		"startElement {}i i", "characters -2147483648 2147483647", "endElement {}i i",
		"startElement {}l l", "characters -9223372036854775808", "endElement {}l l",
		"startElement {}b b", "characters true false true", "endElement {}b b",
	};
	ASSERT_GE(text.size(), expectedText.size());
	EXPECT_EQ(expectedText, std::vector<std::string>(text.begin(), text.begin() + expectedText.size()));
	EXPECT_EQ("characters AP8Q", text[text.size() - 4]);   // base64 text of 00 ff 10
}


TEST(RoundTripTest, EachRunOfTypedValuesHoldsOnlyItsOwnValues)
{
	// The writer reuses one value object per algorithm from run to run.
	const std::string document = written([](FastInfosetWriter& w)
	{
		w.startElement("", "r", "r");
		w.encodedData(1); w.encodedData(2);
		w.emptyElement("", "e", "e");
		w.encodedData(3);
		w.encodedData(short(4));
		w.encodedData(5);
		w.binaryData("\x01", 1);
		w.characters("t");
		w.binaryData("\x02\x03", 2);
		w.endElement("", "r", "r");
	});
	const std::vector<std::string> expected =
	{
		"startDocument", "startElement {}r r", "int 1", "int 2", "startElement {}e e", "endElement {}e e",
		"int 3", "short 4", "int 5", "binaryData 01", "characters t", "binaryData 0203", "endElement {}r r", "endDocument",
	};
	EXPECT_EQ(expected, parsed(document));
}


TEST(RoundTripTest, EveryReadingGivesTheEventsOfMemoryWhereverTheRefillFalls)
{
	// An XML declaration of growing length in front of the document moves
	// the stream reader's refill across every kind of item.
	for (const std::string& path: dataFiles())
	{
		SCOPED_TRACE(path);
		std::ostringstream fi;
		{
			FastInfosetWriter writer(fi, false, DocumentVocabulary::VOC_MAP);
			parseXMLFile(path, writer);
		}
		const std::string body = fi.str();
		for (std::size_t padding = 0; padding < 64; padding += 3)
		{
			SCOPED_TRACE(testing::Message() << "padding " << padding);
			const std::string document = "<?xml encoding='finf'" + std::string(padding, ' ') + "?>" + body;
			EventRecorder fromMemory;
			FastInfosetParser memoryParser;
			fromMemory.attachTo(memoryParser);
			Input(document, Reading::MEMORY).parse(memoryParser);
			for (Reading reading: READINGS)
			{
				if (reading == Reading::MEMORY) continue;
				SCOPED_TRACE(testing::Message() << reading);
				EventRecorder recorder;
				FastInfosetParser parser;
				recorder.attachTo(parser);
				Input(document, reading).parse(parser);
				ASSERT_EQ(fromMemory.digest(), recorder.digest()) << firstDifference(fromMemory.lines, recorder.lines);
			}
		}
	}
}
