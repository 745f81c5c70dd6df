//
// TextJoiner.h
//
// Library: FastInfoset
// Module:  TextJoiner
//
// Internal: this header is not installed.
//


#ifndef FastInfoset_TextJoiner_INCLUDED
#define FastInfoset_TextJoiner_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Poco/SAX/ContentHandler.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class TextJoiner:
	public Ixor::XML::ContentHandler,
	public Ixor::XML::LexicalHandler,
	public Ixor::XML::DTDHandler
	/// Sits between an XML parser and a writer and hands on every event as
	/// it comes, except that adjacent characters() calls reach the writer
	/// as one. XML parsers cut text where their buffers or lines end, so
	/// "\n\t" arrives as "\n" and "\t"; joined, the text between two tags
	/// is one chunk, which repeats and then goes out as an index.
{
public:
	TextJoiner(Ixor::XML::ContentHandler& content, Ixor::XML::LexicalHandler* pLexical, Ixor::XML::DTDHandler* pDTD);
		/// The events of a null handler are dropped.

	// ContentHandler
	void setDocumentLocator(const Ixor::XML::Locator* pLocator);
	void startDocument();
	void endDocument();
	void startElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname, const Ixor::XML::Attributes& attributes);
	void endElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname);
	void characters(const Ixor::XML::XMLChar ch[], int start, int length);
	void ignorableWhitespace(const Ixor::XML::XMLChar ch[], int start, int length);
	void processingInstruction(const Ixor::XML::XMLString& target, const Ixor::XML::XMLString& data);
	void startPrefixMapping(const Ixor::XML::XMLString& prefix, const Ixor::XML::XMLString& uri);
	void endPrefixMapping(const Ixor::XML::XMLString& prefix);
	void skippedEntity(const Ixor::XML::XMLString& name);

	// LexicalHandler
	void startDTD(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString& publicId, const Ixor::XML::XMLString& systemId);
	void endDTD();
	void startEntity(const Ixor::XML::XMLString& name);
	void endEntity(const Ixor::XML::XMLString& name);
	void startCDATA();
	void endCDATA();
	void comment(const Ixor::XML::XMLChar ch[], int start, int length);

	// DTDHandler
	void notationDecl(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString* publicId, const Ixor::XML::XMLString* systemId);
	void unparsedEntityDecl(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString* publicId, const Ixor::XML::XMLString& systemId, const Ixor::XML::XMLString& notationName);

private:
	void flush();

	Ixor::XML::ContentHandler& _content;
	Ixor::XML::LexicalHandler* _pLexical;
	Ixor::XML::DTDHandler*     _pDTD;
	std::string                _text;   // the characters not yet handed on
};


//
// inlines
//
inline void TextJoiner::flush()
{
	if (_text.empty()) return;
	_content.characters(_text.data(), 0, static_cast<int>(_text.size()));
	_text.clear();
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_TextJoiner_INCLUDED
