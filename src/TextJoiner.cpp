#include "TextJoiner.h"
#include <climits>


using Ixor::XML::XMLString;
using Ixor::XML::XMLChar;


namespace Ixor {
namespace FastInfoset {


TextJoiner::TextJoiner(Ixor::XML::ContentHandler& content, Ixor::XML::LexicalHandler* pLexical, Ixor::XML::DTDHandler* pDTD):
	_content(content),
	_pLexical(pLexical),
	_pDTD(pDTD)
{
}


void TextJoiner::characters(const XMLChar ch[], int start, int length)
{
	// Joined text longer than an int can say goes on in a second call.
	if (length <= 0) return;
	if (_text.size() > static_cast<std::size_t>(INT_MAX - length)) flush();
	_text.append(ch + start, static_cast<std::size_t>(length));
}


void TextJoiner::setDocumentLocator(const Ixor::XML::Locator* pLocator)
{
	_content.setDocumentLocator(pLocator);
}


void TextJoiner::startDocument()
{
	_text.clear();
	_content.startDocument();
}


void TextJoiner::endDocument()
{
	flush();
	_content.endDocument();
}


void TextJoiner::startElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Ixor::XML::Attributes& attributes)
{
	flush();
	_content.startElement(uri, localName, qname, attributes);
}


void TextJoiner::endElement(const XMLString& uri, const XMLString& localName, const XMLString& qname)
{
	flush();
	_content.endElement(uri, localName, qname);
}


void TextJoiner::ignorableWhitespace(const XMLChar ch[], int start, int length)
{
	flush();
	_content.ignorableWhitespace(ch, start, length);
}


void TextJoiner::processingInstruction(const XMLString& target, const XMLString& data)
{
	flush();
	_content.processingInstruction(target, data);
}


void TextJoiner::startPrefixMapping(const XMLString& prefix, const XMLString& uri)
{
	flush();
	_content.startPrefixMapping(prefix, uri);
}


void TextJoiner::endPrefixMapping(const XMLString& prefix)
{
	flush();
	_content.endPrefixMapping(prefix);
}


void TextJoiner::skippedEntity(const XMLString& name)
{
	flush();
	_content.skippedEntity(name);
}


void TextJoiner::startDTD(const XMLString& name, const XMLString& publicId, const XMLString& systemId)
{
	flush();
	if (_pLexical) _pLexical->startDTD(name, publicId, systemId);
}


void TextJoiner::endDTD()
{
	flush();
	if (_pLexical) _pLexical->endDTD();
}


void TextJoiner::startEntity(const XMLString& name)
{
	flush();
	if (_pLexical) _pLexical->startEntity(name);
}


void TextJoiner::endEntity(const XMLString& name)
{
	flush();
	if (_pLexical) _pLexical->endEntity(name);
}


void TextJoiner::startCDATA()
{
	flush();
	if (_pLexical) _pLexical->startCDATA();
}


void TextJoiner::endCDATA()
{
	flush();
	if (_pLexical) _pLexical->endCDATA();
}


void TextJoiner::comment(const XMLChar ch[], int start, int length)
{
	flush();
	if (_pLexical) _pLexical->comment(ch, start, length);
}


void TextJoiner::notationDecl(const XMLString& name, const XMLString* publicId, const XMLString* systemId)
{
	flush();
	if (_pDTD) _pDTD->notationDecl(name, publicId, systemId);
}


void TextJoiner::unparsedEntityDecl(const XMLString& name, const XMLString* publicId, const XMLString& systemId, const XMLString& notationName)
{
	flush();
	if (_pDTD) _pDTD->unparsedEntityDecl(name, publicId, systemId, notationName);
}


} } // namespace Ixor::FastInfoset
