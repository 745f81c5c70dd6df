#include "Transcoder.h"
#include "DoctypeAdapter.h"
#include "EncodingWriter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/SAX/WhitespaceFilter.h"
#include "Poco/XML/XMLWriter.h"
#include <istream>
#include <ostream>


using Ixor::FastInfoset::DocumentVocabulary;
using Ixor::FastInfoset::FastInfosetParser;
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


	template <class Parse>
	void decodeWith(std::ostream& xml, const Transcoder::DecodeOptions& options, Parse parse)
	{
		int flags = 0;
		if (options.pretty) flags |= Ixor::XML::XMLWriter::PRETTY_PRINT;
		if (options.declaration) flags |= Ixor::XML::XMLWriter::WRITE_XML_DECLARATION;
		Ixor::XML::XMLWriter writer(xml, flags);
		writer.setNewLine(Ixor::XML::XMLWriter::NEWLINE_LF);
		DoctypeAdapter adapter(writer);

		FastInfosetParser parser(DocumentVocabulary::VOC_VECTOR);
		parser.setLoadExternalVocabularies(options.loadExternalVocabularies);
		wire(parser, &adapter, &adapter, &adapter);
		parse(parser);
		// XML text files end with a line break, which no SAX event carries.
		xml << '\n';
	}
}


void Transcoder::encode(std::istream& xml, std::ostream& fi, const EncodeOptions& options)
{
	EncodingWriter writer(fi, options.xmlDeclaration);
	writer.setMaxIndexedStringLength(options.maxIndexedLength);

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
	decodeWith(xml, options, [&fi](FastInfosetParser& parser)
	{
		Ixor::XML::InputSource source(fi);
		parser.parse(&source);
	});
}


void Transcoder::decode(const char* data, std::size_t size, std::ostream& xml, const DecodeOptions& options)
{
	decodeWith(xml, options, [data, size](FastInfosetParser& parser)
	{
		parser.parseMemoryNP(data, size);
	});
}


} // namespace Fitool
