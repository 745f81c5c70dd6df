#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/Utility.h"
#include "EventRecorder.h"
#include "TestSupport.h"
#include "Poco/DirectoryIterator.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXException.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/SAX/WhitespaceFilter.h"
#include "Poco/XML/XMLWriter.h"
#include <gtest/gtest.h>
#include <fstream>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using Ixor::XML::XMLReader;


namespace {


std::string xmlEvents(const std::string& xml, bool stripWhitespace)
{
	EventRecorder::Options options;
	options.comparable = true;
	options.sortAttributes = true;
	EventRecorder recorder(options);
	Ixor::XML::SAXParser parser;
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	Ixor::XML::WhitespaceFilter filter(&parser);
	XMLReader& reader = stripWhitespace ? static_cast<XMLReader&>(filter) : static_cast<XMLReader&>(parser);
	recorder.attachTo(reader);
	std::istringstream in(xml);
	Ixor::XML::InputSource source(in);
	reader.parse(&source);
	// The XML writer does not print the DTD; compare what it keeps.
	std::string text;
	bool inDTD = false;
	for (const std::string& line: recorder.lines)
	{
		if (line.compare(0, 8, "startDTD") == 0) inDTD = true;
		if (!inDTD && line.compare(0, 7, "comment") != 0) text += line + "\n";
		if (line == "endDTD") inDTD = false;
	}
	return text;
}


std::vector<std::string> lines(const std::string& text)
{
	std::vector<std::string> result;
	std::istringstream in(text);
	for (std::string line; std::getline(in, line);) result.push_back(line);
	return result;
}


std::string fileContent(const std::string& path)
{
	std::ifstream in(path, std::ios::binary);
	std::ostringstream content;
	content << in.rdbuf();
	return content.str();
}


} // namespace


TEST(ConverterTest, XMLTextSurvivesBothDirections)
{
	for (Poco::DirectoryIterator it{std::string(FASTINFOSET_TEST_DATA)}, end; it != end; ++it)
	{
		if (it.path().getExtension() != "xml") continue;
		const std::string xml = fileContent(it.path().toString());
		for (int options: {0, 1, 128})
		{
			SCOPED_TRACE(it.name() + " options " + std::to_string(options));
			std::istringstream xmlIn(xml);
			std::ostringstream fiOut;
			Converter::convertToFIS(xmlIn, fiOut, options, 16);
			std::istringstream fiIn(fiOut.str());
			std::ostringstream xmlOut;
			Converter::convertToXML(fiIn, xmlOut, 0);
			// The document type declaration comes back without the root
			// element's name, which the format does not carry: the host's XML
			// writer prints it as "<!DOCTYPE  ...>", which no XML parser
			// takes. Everything after it must be the original.
			std::string back = xmlOut.str();
			const std::size_t doctype = back.find("<!DOCTYPE  ");
			if (doctype != std::string::npos) back.erase(doctype, back.find('>', doctype) + 1 - doctype);
			EXPECT_EQ("", firstDifference(lines(xmlEvents(xml, options != 0)), lines(xmlEvents(back, false))));
		}
	}
}


TEST(ConverterTest, WhitespaceIsDroppedOnlyWhenAsked)
{
	const std::string xml = "<a>\n  <b>x</b>\n</a>";
	std::string sizes[3];
	int i = 0;
	for (int options: {0, 1, 128})
	{
		std::istringstream in(xml);
		std::ostringstream out;
		Converter::convertToFIS(in, out, options, 16);
		std::istringstream fi(out.str());
		std::ostringstream back;
		Converter::convertToXML(fi, back, 0);
		sizes[i++] = back.str();
	}
	EXPECT_EQ("<a>\n  <b>x</b>\n</a>", sizes[0]);
	EXPECT_EQ("<a><b>x</b></a>", sizes[1]);
	EXPECT_EQ(sizes[1], sizes[2]);
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
