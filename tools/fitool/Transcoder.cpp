#include "Transcoder.h"
#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/SAX/WhitespaceFilter.h"
#include "Poco/XML/XMLWriter.h"
#include <istream>
#include <ostream>


using Ixor::FastInfoset::Converter;
using Ixor::FastInfoset::DocumentVocabulary;
using Ixor::FastInfoset::FastInfosetParser;
using Ixor::FastInfoset::FastInfosetWriter;
using Ixor::XML::XMLReader;


namespace Fitool {


namespace
{
	void wire(XMLReader& reader, Ixor::XML::ContentHandler* pContent, Ixor::XML::DTDHandler* pDTD, Ixor::XML::LexicalHandler* pLexical)
	{
		reader.setContentHandler(pContent);
		reader.setDTDHandler(pDTD);
		reader.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, pLexical);
	}
}


void Transcoder::encode(std::istream& xml, std::ostream& fi, const EncodeOptions& options)
{
	// Map tables grow without limit.
	FastInfosetWriter writer(fi, options.xmlDeclaration, DocumentVocabulary::VOC_MAP);
	writer.setMaxIndexedStringLength(options.maxIndexedLength);
	// After the indexed length, which the vocabulary's longest string raises.
	if (options.pVocabulary) writer.setExternalVocabulary(options.pVocabulary->getURI(), *options.pVocabulary);

	Ixor::XML::SAXParser parser;
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	Ixor::XML::InputSource source(xml);
	if (options.stripWhitespace)
	{
		Ixor::XML::WhitespaceFilter filter(&parser);
		wire(filter, &writer, &writer, &writer);
		filter.parse(&source);
	}
	else
	{
		wire(parser, &writer, &writer, &writer);
		parser.parse(&source);
	}
}


void Transcoder::decode(std::istream& fi, std::ostream& xml, const DecodeOptions& options)
{
	int flags = Converter::END_WITH_NEWLINE;
	if (options.pretty) flags |= Ixor::XML::XMLWriter::PRETTY_PRINT;
	if (options.declaration) flags |= Ixor::XML::XMLWriter::WRITE_XML_DECLARATION;
	Converter::convertToXML(*newParser(options), fi, xml, flags);
}


std::unique_ptr<FastInfosetParser> Transcoder::newParser(const DecodeOptions& options)
{
	std::unique_ptr<FastInfosetParser> pParser(options.pVocabulary ? new FastInfosetParser(*options.pVocabulary)
		: new FastInfosetParser(DocumentVocabulary::VOC_VECTOR));
	pParser->setLoadExternalVocabularies(options.loadExternalVocabularies);
	pParser->setAmplificationThreshold(options.amplificationThreshold);
	pParser->setMaxAmplification(options.maxAmplification);
	return pParser;
}


} // namespace Fitool
