//
// DoctypeAdapter.h
//
// Tool: fitool
// Module: DoctypeAdapter
//


#ifndef Fitool_DoctypeAdapter_INCLUDED
#define Fitool_DoctypeAdapter_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Notation.h"
#include "Ixor/FastInfoset/UnparsedEntity.h"
#include "Poco/SAX/ContentHandler.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include <string>
#include <vector>


namespace Fitool {


class DoctypeAdapter:
	public Ixor::XML::ContentHandler,
	public Ixor::XML::LexicalHandler,
	public Ixor::XML::DTDHandler
	/// Sits between FastInfosetParser and the host's XMLWriter so that the
	/// printed XML text is well-formed.
	///
	/// A Fast Infoset document does not carry the name of its document type
	/// declaration, and the parser reports it empty; the writer would print
	/// "<!DOCTYPE  SYSTEM ...>". The adapter holds the declaration back and
	/// writes it, with the root element's qualified name, when the first
	/// element starts. Notations and unparsed entities (which the parser
	/// reports before startDocument) go into its internal subset; a
	/// document without a declaration gets one for them.
	///
	/// What cannot be printed well-formed is dropped: a declaration that
	/// comes after the first element or a second declaration, a document
	/// without elements, a public identifier without system identifier (XML
	/// needs both) and notations without identifiers. Processing
	/// instructions from inside the declaration are written before it, in
	/// the prolog; comments and processing instructions that follow it wait
	/// with it, so that their order is kept. Everything else is passed on
	/// unchanged.
{
public:
	explicit DoctypeAdapter(Ixor::XML::XMLWriter& writer);
	~DoctypeAdapter();

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
	DoctypeAdapter(const DoctypeAdapter&);
	DoctypeAdapter& operator = (const DoctypeAdapter&);

	struct PrologEvent
		/// A comment, processing instruction or text held back behind the
		/// declaration.
	{
		enum Kind
		{
			COMMENT,
			PROCESSING_INSTRUCTION,
			CHARACTERS
		};

		Kind        kind;
		std::string target;
		std::string text;
	};

	bool holding() const;
	void writeDoctype(const std::string& rootName);
	void writeProlog();

	Ixor::XML::XMLWriter&                          _writer;
	bool                                           _haveDoctype;  // a declaration waits for the root element
	bool                                           _inDoctype;    // between startDTD and endDTD
	bool                                           _rootStarted;
	std::string                                    _publicId;
	std::string                                    _systemId;
	std::vector<Ixor::FastInfoset::Notation>       _notations;
	std::vector<Ixor::FastInfoset::UnparsedEntity> _unparsedEntities;
	std::vector<PrologEvent>                       _prolog;
};


} // namespace Fitool


#endif // Fitool_DoctypeAdapter_INCLUDED
