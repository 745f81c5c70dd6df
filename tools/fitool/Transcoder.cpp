#include "Transcoder.h"
#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Poco/XML/XMLWriter.h"
#include <istream>
#include <ostream>


using Ixor::FastInfoset::Converter;
using Ixor::FastInfoset::DocumentVocabulary;
using Ixor::FastInfoset::FastInfosetParser;
using Ixor::FastInfoset::FastInfosetWriter;


namespace Fitool {


void Transcoder::encode(std::istream& xml, std::ostream& fi, const EncodeOptions& options)
{
	// Map tables grow without limit.
	FastInfosetWriter writer(fi, options.xmlDeclaration, DocumentVocabulary::VOC_MAP);
	writer.setMaxIndexedStringLength(options.maxIndexedLength);
	// After the indexed length, which the vocabulary's longest string raises.
	if (options.pVocabulary) writer.setExternalVocabulary(options.pVocabulary->getURI(), *options.pVocabulary);

	Converter::convertToFIS(xml, writer, options.stripWhitespace ? Converter::STRIP_WHITESPACE : 0);
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
