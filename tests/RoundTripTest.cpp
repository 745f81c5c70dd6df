#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "EventRecorder.h"
#include "TestSupport.h"
#include "Poco/DirectoryIterator.h"
#include "Poco/DOM/DOMBuilder.h"
#include "Poco/DOM/DOMParser.h"
#include "Poco/DOM/DOMWriter.h"
#include "Poco/DOM/Document.h"
#include "Poco/DOM/Element.h"
#include "Poco/SAX/AttributesImpl.h"
#include "Poco/SAX/DefaultHandler.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/SAX/WhitespaceFilter.h"
#include <gtest/gtest.h>
#include <fstream>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using Ixor::XML::XMLReader;


namespace {


std::vector<std::string> dataFiles()
{
	std::vector<std::string> files;
	for (Poco::DirectoryIterator it{std::string(FASTINFOSET_TEST_DATA)}, end; it != end; ++it)
	{
		if (it.path().getExtension() == "xml") files.push_back(it.path().toString());
	}
	std::sort(files.begin(), files.end());
	return files;
}


void parseXML(const std::string& path, bool stripWhitespace, Ixor::XML::ContentHandler* pContent, Ixor::XML::LexicalHandler* pLexical, Ixor::XML::DTDHandler* pDTD)
	/// Feeds the events of an XML file to the handlers, as the converter does.
{
	std::ifstream in(path, std::ios::binary);
	Ixor::XML::SAXParser parser;
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	Ixor::XML::WhitespaceFilter filter(&parser);
	XMLReader& reader = stripWhitespace ? static_cast<XMLReader&>(filter) : static_cast<XMLReader&>(parser);
	reader.setContentHandler(pContent);
	reader.setDTDHandler(pDTD);
	reader.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, pLexical);
	Ixor::XML::InputSource source(in);
	reader.parse(&source);
}


EventRecorder::Options comparable()
{
	EventRecorder::Options options;
	options.comparable = true;
	return options;
}


std::string written(const std::function<void(FastInfosetWriter&)>& events)
{
	std::ostringstream out;
	{
		FastInfosetWriter writer(out);
		writer.startDocument();
		events(writer);
		writer.endDocument();
	}
	return out.str();
}


std::vector<std::string> parsed(const std::string& document, bool typed = true)
{
	EventRecorder recorder;
	FastInfosetParser parser;
	recorder.attachTo(parser);
	if (!typed)
	{
		// A plain content handler that forwards to the recorder.
		struct Plain: public Ixor::XML::DefaultHandler
		{
			EventRecorder* p;
			void startElement(const std::string& u, const std::string& l, const std::string& q, const Ixor::XML::Attributes& a) { p->startElement(u, l, q, a); }
			void endElement(const std::string& u, const std::string& l, const std::string& q) { p->endElement(u, l, q); }
			void characters(const char ch[], int start, int length) { p->characters(ch, start, length); }
		} plain;
		plain.p = &recorder;
		parser.setContentHandler(&plain);
		parser.parseMemoryNP(document.data(), document.size());
		return recorder.lines;
	}
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
			parseXML(path, strip, &original, &original, &original);

			std::ostringstream fi;
			{
				FastInfosetWriter writer(fi, false, DocumentVocabulary::VOC_HASH);
				parseXML(path, strip, &writer, &writer, &writer);
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


namespace {


class HostEvents: public Ixor::XML::ContentHandler, public Ixor::XML::LexicalHandler, public Ixor::XML::DTDHandler
	/// Every event as a line, as the host's parser and ours must both report
	/// it, except what the format does not keep: how text is cut into
	/// characters() calls, CDATA markers, and what is inside the DTD.
{
public:
	explicit HostEvents(bool blankQNames = false):
		_blankQNames(blankQNames)
	{
	}

	std::vector<std::string> lines;

	void attachTo(XMLReader& reader)
	{
		reader.setContentHandler(this);
		reader.setDTDHandler(this);
		reader.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(this));
	}

	void setDocumentLocator(const Ixor::XML::Locator*) override {}
	void startDocument() override { add("startDocument"); }
	void endDocument() override { add("endDocument"); }

	void startElement(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes) override
	{
		std::string line = "startElement {" + uri + "}" + localName + " " + qualified(qname);
		const Ixor::XML::AttributesImpl* pList = dynamic_cast<const Ixor::XML::AttributesImpl*>(&attributes);
		if (!pList) line += " (not the host's list)";
		for (int i = 0; i < attributes.getLength(); ++i)
		{
			line += " {" + attributes.getURI(i) + "}" + attributes.getLocalName(i) + "[" + qualified(attributes.getQName(i)) + "|"
				+ attributes.getType(i) + "]=" + attributes.getValue(i);
		}
		add(line);
	}

	void endElement(const std::string& uri, const std::string& localName, const std::string& qname) override
	{
		add("endElement {" + uri + "}" + localName + " " + qualified(qname));
	}

	void characters(const char ch[], int start, int length) override
	{
		if (_inDTD) return;
		if (!lines.empty() && lines.back().compare(0, 11, "characters ") == 0) lines.back().append(ch + start, length);
		else add("characters " + std::string(ch + start, length));
	}

	void ignorableWhitespace(const char ch[], int start, int length) override { characters(ch, start, length); }
	void processingInstruction(const std::string& target, const std::string& data) override { add("pi " + target + " " + data); }
	void startPrefixMapping(const std::string& prefix, const std::string& uri) override { add("startPrefixMapping " + prefix + "=" + uri); }
	void endPrefixMapping(const std::string& prefix) override { add("endPrefixMapping " + prefix); }
	void skippedEntity(const std::string& name) override { add("skippedEntity " + name); }

	void startDTD(const std::string&, const std::string& publicId, const std::string& systemId) override
	{
		add("startDTD public=" + publicId + " system=" + systemId);
		_inDTD = true;
	}
	void endDTD() override { _inDTD = false; add("endDTD"); }
	void startEntity(const std::string&) override {}
	void endEntity(const std::string&) override {}
	void startCDATA() override {}
	void endCDATA() override {}
	void comment(const char ch[], int start, int length) override { add("comment " + std::string(ch + start, length)); }

	void notationDecl(const std::string& name, const std::string*, const std::string*) override { add("notation " + name); }
	void unparsedEntityDecl(const std::string& name, const std::string*, const std::string&, const std::string&) override { add("unparsedEntity " + name); }

private:
	void add(const std::string& line)
	{
		if (!_inDTD) lines.push_back(line);
	}

	std::string qualified(const std::string& qname) const
	{
		return _blankQNames ? std::string() : qname;
	}

	bool _blankQNames;
	bool _inDTD = false;
};


} // namespace


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
			HostEvents expected(!prefixes);
			{
				std::ifstream in(path, std::ios::binary);
				Ixor::XML::SAXParser host;
				host.setFeature(XMLReader::FEATURE_NAMESPACES, true);
				host.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
				expected.attachTo(host);
				Ixor::XML::InputSource source(in);
				host.parse(&source);
			}
			HostEvents actual;
			FastInfosetParser parser;
			parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, prefixes);
			actual.attachTo(parser);
			parser.parseMemoryNP(document.data(), document.size());
			EXPECT_EQ("", firstDifference(expected.lines, actual.lines));
			EXPECT_GT(expected.lines.size(), 20u);
		}
	}
}


TEST(RoundTripTest, TheHostsDOMBuilderBuildsTheDocumentItsParserBuilds)
{
	// The DOM builder takes the attribute list for the host's own, and walks
	// its entries directly.
	for (const std::string& path: dataFiles())
	{
		SCOPED_TRACE(path);
		Poco::XML::DOMParser domParser;
		Poco::AutoPtr<Poco::XML::Document> pExpected = domParser.parse(path);

		std::ifstream xml(path, std::ios::binary);
		std::ostringstream fi;
		Converter::convertToFIS(xml, fi, 0, 16);
		const std::string document = fi.str();
		FastInfosetParser parser;
		Poco::XML::DOMBuilder builder(parser);
		Ixor::XML::InputSource source;
		std::istringstream in(document);
		source.setByteStream(in);
		Poco::AutoPtr<Poco::XML::Document> pActual = builder.parse(&source);

		const auto text = [](const Poco::XML::Document* pDocument)
		{
			// Only the root element: the document type node differs by design.
			std::ostringstream out;
			Poco::XML::DOMWriter writer;
			writer.writeNode(out, pDocument->documentElement());
			return out.str();
		};
		EXPECT_EQ(text(pExpected), text(pActual));
		EXPECT_GT(text(pActual).size(), 100u);
	}
}


TEST(RoundTripTest, StructureAndDeclarationsComeBackAsWritten)
{
	const std::string document = written([](FastInfosetWriter& w) { (void) w; });
	std::ostringstream out;
	{
		FastInfosetWriter w(out);
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
	}
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
	EXPECT_EQ(expected, parsed(out.str()));
	(void) document;
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
		"startElement {}r r", "characters -32768 32767",
		"startElement {}i i", "characters -2147483648 2147483647", "endElement {}i i",
		"startElement {}l l", "characters -9223372036854775808", "endElement {}l l",
		"startElement {}b b", "characters true false true", "endElement {}b b",
	};
	ASSERT_GE(text.size(), expectedText.size());
	EXPECT_EQ(expectedText, std::vector<std::string>(text.begin(), text.begin() + expectedText.size()));
	EXPECT_EQ("characters AP8Q", text[text.size() - 3]);   // base64 text of 00 ff 10
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


TEST(RoundTripTest, StreamsGiveTheEventsOfMemoryWhereverTheRefillFalls)
{
	// An XML declaration of growing length in front of the document moves
	// the stream reader's refill across every kind of item.
	for (const std::string& path: dataFiles())
	{
		SCOPED_TRACE(path);
		std::ostringstream fi;
		{
			FastInfosetWriter writer(fi, false, DocumentVocabulary::VOC_MAP);
			parseXML(path, false, &writer, &writer, &writer);
		}
		const std::string body = fi.str();
		const std::vector<std::string> fromMemory = parsed(body);
		for (std::size_t padding = 0; padding < 64; padding += 3)
		{
			const std::string document = "<?xml encoding='finf'" + std::string(padding, ' ') + "?>" + body;
			EventRecorder recorder;
			FastInfosetParser parser;
			recorder.attachTo(parser);
			std::istringstream in(document);
			Ixor::XML::InputSource source(in);
			parser.parse(&source);
			ASSERT_EQ("", firstDifference(fromMemory, recorder.lines)) << "padding " << padding;
		}
	}
}
