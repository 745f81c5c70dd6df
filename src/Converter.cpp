#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "TextJoiner.h"
#include "WellFormedAdapter.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/SAX/WhitespaceFilter.h"
#include "Poco/XML/XMLWriter.h"
#include <ostream>


using Ixor::XML::XMLReader;


namespace Ixor {
namespace FastInfoset {


namespace
{
	class HandlerScope
		/// Gives a parser's handlers to one converter call and sets the
		/// caller's back at the end.
	{
	public:
		HandlerScope(FastInfosetParser& parser, WellFormedAdapter& adapter):
			_parser(parser),
			_pContentHandler(parser.getContentHandler()),
			_pDTDHandler(parser.getDTDHandler()),
			_pLexicalHandler(parser.getProperty(XMLReader::PROPERTY_LEXICAL_HANDLER)),
			_pDocumentHandler(parser.getDocumentHandler())
		{
			Ixor::XML::LexicalHandler* pLexicalHandler = &adapter;
			_parser.setContentHandler(&adapter);
			_parser.setDTDHandler(&adapter);
			_parser.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, pLexicalHandler);
			_parser.setDocumentHandler(0);
		}

		~HandlerScope()
		{
			_parser.setContentHandler(_pContentHandler);
			_parser.setDTDHandler(_pDTDHandler);
			_parser.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, _pLexicalHandler);
			_parser.setDocumentHandler(_pDocumentHandler);
		}

	private:
		FastInfosetParser&          _parser;
		Ixor::XML::ContentHandler*  _pContentHandler;
		Ixor::XML::DTDHandler*      _pDTDHandler;
		void*                       _pLexicalHandler;
		FISDocumentHandler*         _pDocumentHandler;
	};
}


void Converter::convertToFIS(std::istream& xmlIn, std::ostream& fiOut, int options, int maxIndexedStringLength)
{
	FastInfosetWriter writer(fiOut, false, DocumentVocabulary::VOC_MAP);
	writer.setMaxIndexedStringLength(maxIndexedStringLength);
	convertToFIS(xmlIn, writer, options);
}


void Converter::convertToFIS(std::istream& xmlIn, FastInfosetWriter& writer, int options)
{
	Ixor::XML::SAXParser parser;
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	Ixor::XML::InputSource source(xmlIn);

	TextJoiner joiner(writer, &writer, &writer);
	Ixor::XML::LexicalHandler* pLexicalHandler = &joiner;
	auto parse = [&](XMLReader& reader)
	{
		reader.setContentHandler(&joiner);
		reader.setDTDHandler(&joiner);
		reader.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, pLexicalHandler);
		reader.parse(&source);
	};
	if (options & 0x81)
	{
		Ixor::XML::WhitespaceFilter filter(&parser);
		parse(filter);
	}
	else
	{
		parse(parser);
	}
}


void Converter::convertToXML(std::istream& fiIn, std::ostream& xmlOut, int options)
{
	FastInfosetParser parser(DocumentVocabulary::VOC_VECTOR);
	convertToXML(parser, fiIn, xmlOut, options);
}


void Converter::convertToXML(FastInfosetParser& parser, std::istream& fiIn, std::ostream& xmlOut, int options)
{
	{
		Ixor::XML::XMLWriter xmlWriter(xmlOut, options & ~END_WITH_NEWLINE);
		WellFormedAdapter adapter(xmlWriter);
		HandlerScope scope(parser, adapter);
		Ixor::XML::InputSource source(fiIn);
		parser.parse(&source);
	}
	if ((options & END_WITH_NEWLINE) && !(options & Ixor::XML::XMLWriter::PRETTY_PRINT)) xmlOut << '\n';
}


} } // namespace Ixor::FastInfoset
