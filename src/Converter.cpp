#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/SAX/WhitespaceFilter.h"
#include "Poco/XML/XMLWriter.h"


using Ixor::XML::XMLReader;


namespace Ixor {
namespace FastInfoset {


void Converter::convertToFIS(std::istream& xmlIn, std::ostream& fiOut, int options, int maxIndexedStringLength)
{
	FastInfosetWriter writer(fiOut, false, DocumentVocabulary::VOC_MAP);
	writer.setMaxIndexedStringLength(maxIndexedStringLength);

	Ixor::XML::SAXParser parser;
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	Ixor::XML::InputSource source(xmlIn);

	Ixor::XML::LexicalHandler* pLexicalHandler = &writer;
	if (options & 0x81)
	{
		Ixor::XML::WhitespaceFilter filter(&parser);
		filter.setContentHandler(&writer);
		filter.setDTDHandler(&writer);
		filter.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, pLexicalHandler);
		filter.parse(&source);
	}
	else
	{
		parser.setContentHandler(&writer);
		parser.setDTDHandler(&writer);
		parser.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, pLexicalHandler);
		parser.parse(&source);
	}
}


void Converter::convertToXML(std::istream& fiIn, std::ostream& xmlOut, int options)
{
	Ixor::XML::XMLWriter xmlWriter(xmlOut, options);
	FastInfosetParser parser(DocumentVocabulary::VOC_VECTOR);
	parser.initialize(&xmlWriter);
	Ixor::XML::InputSource source(fiIn);
	parser.parse(&source);
}


} } // namespace Ixor::FastInfoset
