#include "TestSupport.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Poco/DirectoryIterator.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/SAX/WhitespaceFilter.h"
#include <algorithm>
#include <fstream>
#include <sstream>


namespace TestSupport {


std::string writeDocument(const std::function<void(Ixor::FastInfoset::FastInfosetWriter&)>& events)
{
	std::ostringstream out;
	{
		Ixor::FastInfoset::FastInfosetWriter writer(out);
		events(writer);
	}
	return out.str();
}


std::vector<std::string> xmlFilesIn(const std::string& folder)
{
	std::vector<std::string> files;
	for (Poco::DirectoryIterator it(folder), end; it != end; ++it)
	{
		if (it.path().getExtension() == "xml") files.push_back(it.path().toString());
	}
	std::sort(files.begin(), files.end());
	return files;
}


std::string fileContent(const std::string& path)
{
	std::ifstream in(path, std::ios::binary);
	std::ostringstream content;
	content << in.rdbuf();
	return content.str();
}


void parseXML(std::istream& xml, Ixor::XML::ContentHandler* pContent, Ixor::XML::LexicalHandler* pLexical,
	Ixor::XML::DTDHandler* pDTD, bool stripWhitespace)
{
	Ixor::XML::SAXParser parser;
	parser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	Ixor::XML::WhitespaceFilter filter(&parser);
	Ixor::XML::XMLReader& reader = stripWhitespace ? static_cast<Ixor::XML::XMLReader&>(filter) : static_cast<Ixor::XML::XMLReader&>(parser);
	reader.setContentHandler(pContent);
	reader.setDTDHandler(pDTD);
	reader.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, pLexical);
	Ixor::XML::InputSource source(xml);
	reader.parse(&source);
}


} // namespace TestSupport
