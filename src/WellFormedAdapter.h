//
// WellFormedAdapter.h
//
// Library: FastInfoset
// Module:  WellFormedAdapter
//
// Internal: this header is not installed.
//


#ifndef FastInfoset_WellFormedAdapter_INCLUDED
#define FastInfoset_WellFormedAdapter_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Notation.h"
#include "Ixor/FastInfoset/UnparsedEntity.h"
#include "Poco/SAX/ContentHandler.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include <string>
#include <utility>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class WellFormedAdapter:
	public Ixor::XML::ContentHandler,
	public Ixor::XML::LexicalHandler,
	public Ixor::XML::DTDHandler
	/// Sits between FastInfosetParser and the host's XMLWriter so that the
	/// printed text is well-formed XML with namespaces that reads back to
	/// the same data, or the conversion fails.
	///
	/// The format carries things XML text cannot hold; the writer would
	/// print them as they come. What the document itself holds is checked,
	/// and a fault raises FISException "Cannot be written as well-formed
	/// XML" naming it: names that are not XML names, characters XML does
	/// not allow (or octets that are not UTF-8), comments with "--" or a
	/// final "-", processing instructions named xml or holding "?>",
	/// reserved prefixes and namespaces, a prefix without namespace or
	/// bound to two namespaces on one element, the same attribute or prefix
	/// declaration twice, text outside the root element, a second root
	/// element, no root element.
	///
	/// Some things are written differently so that nothing is lost: a
	/// carriage return as "&#xD;" (a reader would turn a literal one into a
	/// line feed), "]]>" inside a CDATA section by ending the section
	/// between "]]" and ">" and starting another (the text stays the same;
	/// where CDATA sections start and end is not data), and an element
	/// without namespace inside a default namespace with xmlns="".
	///
	/// A document does not carry the name of its document type
	/// declaration, and the parser reports it empty: the adapter holds the
	/// declaration back and writes it, with the root element's qualified
	/// name, when that element starts. Notations and unparsed entities
	/// (which the parser reports before startDocument) go into its internal
	/// subset; a document without a declaration gets one for them. In the
	/// declaration what cannot be written well-formed is left out: a
	/// declaration after the root element or a second one, identifiers and
	/// names XML does not allow (a public identifier needs a system
	/// identifier), notations left without identifiers and entities without
	/// system identifier. Processing instructions from inside the
	/// declaration are written before it, in the prolog; comments from
	/// inside it are dropped; comments and processing instructions that
	/// follow it wait with it, so that their order is kept.
{
public:
	explicit WellFormedAdapter(Ixor::XML::XMLWriter& writer);
	~WellFormedAdapter();

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
	WellFormedAdapter(const WellFormedAdapter&);
	WellFormedAdapter& operator = (const WellFormedAdapter&);

	struct PrologEvent
		/// A comment or processing instruction held back behind the
		/// declaration.
	{
		bool        comment;
		std::string target;
		std::string text;
	};

	typedef std::pair<std::string, std::string> Binding;   // prefix, namespace name
	typedef std::pair<const std::string*, const std::string*> AttributeName;   // namespace name, local name

	bool holding() const;
	void writeDoctype(const std::string& rootName);
	void writeProlog();
	void checkElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname, const Ixor::XML::Attributes& attributes);
	std::string checkName(const char* what, const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname);
		/// Returns the name's prefix.
	void bind(const std::string& prefix, const std::string& uri, const Ixor::XML::XMLString& elementName);
	void checkAttributesDiffer();
	const std::string& defaultNamespace() const;
	void writeText(const char* text, std::size_t length);
	void writeCDATAText(const char* text, std::size_t length);

	Ixor::XML::XMLWriter&       _writer;
	bool                        _haveDoctype;  // a declaration waits for the root element
	bool                        _inDoctype;    // between startDTD and endDTD
	bool                        _rootStarted;
	bool                        _rootEnded;
	bool                        _inCDATA;
	int                         _cdataBrackets; // "]" just written in the CDATA section, up to 2
	int                         _depth;
	std::string                 _publicId;
	std::string                 _systemId;
	std::vector<Notation>       _notations;
	std::vector<UnparsedEntity> _unparsedEntities;
	std::vector<PrologEvent>    _prolog;
	std::vector<Binding>        _declared;        // declarations of the open elements and the next one, innermost last
	std::vector<std::size_t>    _declaredSizes;   // where each open element's declarations start
	std::size_t                 _pendingStart;    // where the next element's declarations start
	std::vector<Binding>        _elementBindings; // prefixes that one element declares and uses
	std::vector<AttributeName>  _attributeNames;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_WellFormedAdapter_INCLUDED
