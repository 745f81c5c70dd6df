//
// NullHandler.h
//
// A SAX handler of every kind that does nothing: the base of the handlers
// of the tests, the benchmarks and the fuzz targets, which override the
// events they care about.
//


#ifndef FastInfoset_NullHandler_INCLUDED
#define FastInfoset_NullHandler_INCLUDED


#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/SAX/XMLReader.h"
#include "Poco/UUID.h"
#include <cstddef>


namespace TestSupport {


class NullHandler: public Ixor::FastInfoset::FISContentHandler, public Ixor::XML::LexicalHandler, public Ixor::XML::DTDHandler
	/// Receives content, typed, lexical and DTD events and ignores them.
	/// Being a FISContentHandler, it makes the parser deliver typed values
	/// as values; a plain handler (Ixor::XML::DefaultHandler) gets text.
{
public:
	void attachTo(Ixor::XML::XMLReader& reader);
		/// Becomes the reader's content, DTD and lexical handler.

	// ContentHandler
	void setDocumentLocator(const Ixor::XML::Locator*) override {}
	void startDocument() override {}
	void endDocument() override {}
	void startElement(const Ixor::XML::XMLString&, const Ixor::XML::XMLString&, const Ixor::XML::XMLString&, const Ixor::XML::Attributes&) override {}
	void endElement(const Ixor::XML::XMLString&, const Ixor::XML::XMLString&, const Ixor::XML::XMLString&) override {}
	void characters(const Ixor::XML::XMLChar[], int, int) override {}
	void ignorableWhitespace(const Ixor::XML::XMLChar[], int, int) override {}
	void processingInstruction(const Ixor::XML::XMLString&, const Ixor::XML::XMLString&) override {}
	void startPrefixMapping(const Ixor::XML::XMLString&, const Ixor::XML::XMLString&) override {}
	void endPrefixMapping(const Ixor::XML::XMLString&) override {}
	void skippedEntity(const Ixor::XML::XMLString&) override {}

	// FISContentHandler
	void binaryData(const char*, std::size_t) override {}
	void encodedData(short) override {}
	void encodedData(int) override {}
	void encodedData(long) override {}
	void encodedData(bool) override {}
	void encodedData(float) override {}
	void encodedData(double) override {}
	void encodedData(const Ixor::UUID&) override {}

	// LexicalHandler
	void startDTD(const Ixor::XML::XMLString&, const Ixor::XML::XMLString&, const Ixor::XML::XMLString&) override {}
	void endDTD() override {}
	void startEntity(const Ixor::XML::XMLString&) override {}
	void endEntity(const Ixor::XML::XMLString&) override {}
	void startCDATA() override {}
	void endCDATA() override {}
	void comment(const Ixor::XML::XMLChar[], int, int) override {}

	// DTDHandler
	void notationDecl(const Ixor::XML::XMLString&, const Ixor::XML::XMLString*, const Ixor::XML::XMLString*) override {}
	void unparsedEntityDecl(const Ixor::XML::XMLString&, const Ixor::XML::XMLString*, const Ixor::XML::XMLString&, const Ixor::XML::XMLString&) override {}
};


} // namespace TestSupport


#endif // FastInfoset_NullHandler_INCLUDED
