#include "EncodingWriter.h"
#include "Ixor/FastInfoset/FISException.h"


using Ixor::FastInfoset::FISException;
using Ixor::XML::XMLString;


namespace Fitool {


namespace
{
	const char* const UNSUPPORTED = "Cannot encode declarations of notations and unparsed entities";
}


EncodingWriter::EncodingWriter(std::ostream& out, bool writeXMLDeclaration):
	FastInfosetWriter(out, writeXMLDeclaration, Ixor::FastInfoset::DocumentVocabulary::VOC_MAP),
	_started(false)
{
}


EncodingWriter::~EncodingWriter()
{
}


void EncodingWriter::startDocument()
{
	_started = true;
	FastInfosetWriter::startDocument();
}


void EncodingWriter::notationDecl(const XMLString& name, const XMLString* publicId, const XMLString* systemId)
{
	if (_started) throw FISException(UNSUPPORTED, "notation " + name);
	FastInfosetWriter::notationDecl(name, publicId, systemId);
}


void EncodingWriter::unparsedEntityDecl(const XMLString& name, const XMLString* publicId, const XMLString& systemId, const XMLString& notationName)
{
	if (_started) throw FISException(UNSUPPORTED, "unparsed entity " + name);
	FastInfosetWriter::unparsedEntityDecl(name, publicId, systemId, notationName);
}


} // namespace Fitool
