//
// FastInfosetParser.h
//
// Library: FastInfoset
// Module:  FastInfosetParser
//


#ifndef FastInfoset_FastInfosetParser_INCLUDED
#define FastInfoset_FastInfosetParser_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/Encoding.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/SAX/XMLReader.h"
#include <cstddef>
#include <deque>
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class BitStreamReader;
class FastInfosetWriter;
class FISContentHandler;
class FISDocumentHandler;
class NullEncoding;
class NullRefEncoding;


class FastInfoset_API FastInfosetParser: public Ixor::XML::XMLReader
	/// A SAX2 reader of Fast Infoset documents.
	///
	/// When the content handler is also a FISContentHandler, the values of
	/// the built-in encoding algorithms arrive as typed values; otherwise
	/// their text form goes to characters(). Strings handed to callbacks are
	/// valid only during the callback.
	///
	/// Deliberate behaviours: attributes are reported without qualified name
	/// and type; an unprefixed element is reported with an empty qualified
	/// name; endPrefixMapping() follows endElement() in declaration order,
	/// for the declarations of the element read last; the document type
	/// declaration is reported with an empty name; entity references and
	/// the character encoding scheme, standalone and version components are
	/// read and reported to nobody.
	///
	/// Bad input raises FISParseException (end of input), FISEncodingException
	/// (values and bit positions the format does not allow), FISException
	/// (header errors), std::out_of_range or the host's assertion exception
	/// (indexes that name no table entry). Elements nested deeper than
	/// getMaxElementDepth() raise FISParseException "Maximum element depth
	/// exceeded". The error handler is never called.
{
public:
	struct ResolvedQualName
		/// The names of one element or attribute, pointing into the
		/// vocabulary or at EMPTY_STRING.
	{
		ResolvedQualName();

		const std::string* pPrefix;
		const std::string* pUri;
		const std::string* pLocalName;
	};

	static const std::string EMPTY_STRING;

	static const std::size_t DEFAULT_MAX_ELEMENT_DEPTH = 10000;
	static const std::size_t DEFAULT_MAX_NAMESPACE_DECLARATIONS = 10000;

	explicit FastInfosetParser(DocumentVocabulary::VocabularyImpl impl = DocumentVocabulary::VOC_VECTOR);
		/// A parser whose vocabulary has tables of the given kind. Vector
		/// tables give every literal its own index, as the format requires.

	explicit FastInfosetParser(const DocumentVocabulary& vocabulary);
		/// A parser that knows vocabulary in advance: a document that names
		/// its URI as external vocabulary starts from it.

	~FastInfosetParser();

	// XMLReader
	void setEntityResolver(Ixor::XML::EntityResolver* pResolver);
	Ixor::XML::EntityResolver* getEntityResolver() const;
	void setDTDHandler(Ixor::XML::DTDHandler* pDTDHandler);
	Ixor::XML::DTDHandler* getDTDHandler() const;
	void setContentHandler(Ixor::XML::ContentHandler* pContentHandler);
	Ixor::XML::ContentHandler* getContentHandler() const;
	void setErrorHandler(Ixor::XML::ErrorHandler* pErrorHandler);
	Ixor::XML::ErrorHandler* getErrorHandler() const;
	void setFeature(const Ixor::XML::XMLString& featureId, bool state);
		/// Namespaces are always on (turning them off throws
		/// SAXNotSupportedException); namespace prefixes select whether
		/// elements are reported with their qualified name.
	bool getFeature(const Ixor::XML::XMLString& featureId) const;
	void setProperty(const Ixor::XML::XMLString& propertyId, const Ixor::XML::XMLString& value);
	void setProperty(const Ixor::XML::XMLString& propertyId, void* value);
		/// The declaration handler and the lexical handler.
	void* getProperty(const Ixor::XML::XMLString& propertyId) const;
	void parse(Ixor::XML::InputSource* pSource);
		/// Reads from the source's byte stream, else its character stream,
		/// else its system identifier.
	void parse(const Ixor::XML::XMLString& systemId);
		/// Opens the system identifier through the host's URI streams.
	void parseMemoryNP(const char* data, std::size_t size);
		/// Reads the block in place; it is not copied.

	void setDocumentHandler(FISDocumentHandler* pHandler);
	FISDocumentHandler* getDocumentHandler() const;
		/// Receives the document's XML declaration choice and vocabulary.

	const DocumentVocabulary& vocabulary() const;
		/// The vocabulary as the last document left it.

	void initialize(FastInfosetWriter* pWriter);
		/// Makes pWriter the content, document, DTD and lexical handler, so
		/// that a parse writes the document again.

	void initialize(Ixor::XML::XMLWriter* pWriter);
		/// Makes pWriter the content, DTD and lexical handler, so that a
		/// parse prints the document as XML text.

	void setLoadExternalVocabularies(bool load);
	bool getLoadExternalVocabularies() const;
		/// Whether external vocabularies that documents name by URI are
		/// opened and loaded (the default). A parser of documents from
		/// strangers may turn it off: a document can name any file. When
		/// off, such documents raise FISException "External vocabulary
		/// loading is disabled"; a vocabulary given in advance under the
		/// URI is still used.

	void setMaxNamespaceDeclarations(std::size_t count);
	std::size_t getMaxNamespaceDeclarations() const;
		/// The most namespace declarations accepted on one element (default
		/// 10000); more raise FISParseException "Maximum number of namespace
		/// declarations exceeded". Every element that ends reports again the
		/// declarations of the element read last, so a deep document whose
		/// innermost element declares many namespaces would make a small
		/// input report a great many events.

	void setMaxElementDepth(std::size_t depth);
	std::size_t getMaxElementDepth() const;
		/// The deepest nesting of elements accepted (default 10000).

protected:
	struct NameEntry
		/// A qualified name of the element-name or attribute-name table,
		/// resolved to its strings once, with the qualified name that events
		/// report when the namespace-prefixes feature is on.
	{
		NameEntry();

		ResolvedQualName name;
		std::string qname;
		bool resolved;
	};

	class AttributeList: public Ixor::XML::Attributes
		/// The attributes of the current element, reused by every element so
		/// that reading attributes allocates nothing once it has grown.
	{
	public:
		AttributeList();
		void clear();
		void add(const NameEntry& name, const std::string& value);
			/// value must outlive the list's use: a vocabulary entry.
		void add(const NameEntry& name, const char* value, std::size_t length);
			/// Keeps a copy of the value.

		int getIndex(const Ixor::XML::XMLString& name) const;
		int getIndex(const Ixor::XML::XMLString& namespaceURI, const Ixor::XML::XMLString& localName) const;
		int getLength() const;
		const Ixor::XML::XMLString& getLocalName(int i) const;
		const Ixor::XML::XMLString& getQName(int i) const;
		const Ixor::XML::XMLString& getType(int i) const;
		const Ixor::XML::XMLString& getType(const Ixor::XML::XMLString& qname) const;
		const Ixor::XML::XMLString& getType(const Ixor::XML::XMLString& namespaceURI, const Ixor::XML::XMLString& localName) const;
		const Ixor::XML::XMLString& getValue(int i) const;
		const Ixor::XML::XMLString& getValue(const Ixor::XML::XMLString& qname) const;
		const Ixor::XML::XMLString& getValue(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName) const;
		const Ixor::XML::XMLString& getURI(int i) const;

	private:
		struct Entry
		{
			const NameEntry* pName;
			const std::string* pValue; // null: the value is the entry's own copy
			std::string copy;

			const std::string& value() const
			{
				// No pointer to copy is kept: it would dangle once the entries move.
				return pValue ? *pValue : copy;
			}
		};

		Entry& next();

		std::vector<Entry> _entries;
		int _count;
	};

	struct NamespaceDeclaration
	{
		const std::string* pPrefix;
		const std::string* pURI;
	};

	// Structure
	void parseDocument(BitStreamReader& r);
	void parseDocumentChildren(BitStreamReader& r, const Decoder::OpenHeaderParts& parts);
	void parseElementChildren(BitStreamReader& r);
	bool parseElementChild(BitStreamReader& r);
	void parseElement(BitStreamReader& r);
	void endElement(const NameEntry& name);
	void parseNamespaceAttribute(BitStreamReader& r);
	void parseAttribute(BitStreamReader& r);
	const NameEntry& parseQualifiedNameOrIndex(BitStreamReader& r, bool element);
	Vocabulary<QualifiedNameEntry>& getQNameVocabulary(bool element);
	const QualifiedNameEntry& getQualifiedNameEntry(unsigned int index, bool element);

	// Strings
	const std::string* parseIdentifyingStringOrIndex(BitStreamReader& r, DocumentVocabulary::ID id, unsigned int& index);
	const std::string* parseIdentifyingStringOrIndex(BitStreamReader& r, DocumentVocabulary::ID id);
	const std::string* parseCondIdentifyingStringOrIndex(BitStreamReader& r, bool present, DocumentVocabulary::ID id);
	const std::string* parseNonIdentifyingStringOrIndexXML(BitStreamReader& r, DocumentVocabulary::ID id, unsigned int& algorithm);
	Encoding* parseNonIdentifyingStringOrIndex(BitStreamReader& r, DocumentVocabulary::ID id);
	const std::string* parseEncodedCharacterStringXML(BitStreamReader& r, unsigned int& algorithm);
	Encoding* parseEncodedCharacterString(BitStreamReader& r);

	// Leaf items
	void parseCharacterChunk(BitStreamReader& r);
	void parseComment(BitStreamReader& r);
	void parseProcessingInstruction(BitStreamReader& r);
	void parseDocumentTypeDeclaration(BitStreamReader& r);
	void parseUnexpandedEntityReference(BitStreamReader& r);
	void parseNotation(BitStreamReader& r);
	void parseUnparsedEntity(BitStreamReader& r);

private:
	FastInfosetParser(const FastInfosetParser&);
	FastInfosetParser& operator = (const FastInfosetParser&);

	void init();
	const std::string& qualifiedName(const NameEntry& name);
	const std::string& stringAt(DocumentVocabulary::ID id, unsigned int index) const;
	unsigned int addString(DocumentVocabulary::ID id, const std::string& text);
	void syncStrings(DocumentVocabulary::ID id);
	void syncTables();
	const NameEntry& nameAt(unsigned int index, bool element);
	const NameEntry& resolveName(unsigned int index, bool element);
	const NameEntry& addName(const QualifiedNameEntry& entry, const ResolvedQualName& name, bool element);
	const std::string& resolve(DocumentVocabulary::ID id, unsigned int index) const;
	bool parseAttributeValue(BitStreamReader& r, const NameEntry& name);
	void parseAttributeValueOf(BitStreamReader& r, const NameEntry& name);
	bool parseElementFast(BitStreamReader& r, UInt64 window, int available);
	void parseAttributes(BitStreamReader& r);
	bool parseCharacterChunkFast(BitStreamReader& r, UInt64 window, int available);
	void characters(const char* data, std::size_t length);

	Ixor::XML::EntityResolver*     _pEntityResolver;
	Ixor::XML::DTDHandler*         _pDTDHandler;
	Ixor::XML::ContentHandler*     _pContentHandler;
	Ixor::XML::ErrorHandler*       _pErrorHandler;
	Ixor::XML::DeclHandler*        _pDeclHandler;
	Ixor::XML::LexicalHandler*     _pLexicalHandler;
	FISDocumentHandler*            _pDocumentHandler;
	FISContentHandler*             _pFISContentHandler;
	bool                           _namespacePrefixes;
	DocumentVocabulary             _vocabulary;
	DocumentRestrictedAlphabet     _alphabets;
	AttributeList                  _attributes;
	std::vector<NamespaceDeclaration> _namespaceDeclarations;
	std::string                    _xmlDeclaration;
	std::string                    _identifying;
	std::string                    _octets;
	std::string                    _text;
	std::string                    _qname;
	const std::string*             _pQName;
	Ixor::AutoPtr<NullEncoding>    _pLiteralValue;
	Ixor::AutoPtr<NullRefEncoding> _pIndexedValue;
	Ixor::AutoPtr<Encoding>        _pTypedValue;
	std::vector<const NameEntry*>  _openElements;
	std::size_t                    _maxElementDepth;
	std::size_t                    _maxNamespaceDeclarations;
	bool                           _loadExternalVocabularies;

	// Direct views of the vocabulary's tables, by table identifier and
	// index, kept in step with every entry the parser adds: lookups by index
	// cost one array access instead of virtual calls through the tables.
	std::vector<const std::string*> _strings[DocumentVocabulary::CONTENT_CHARACTER_CHUNK + 1];
	std::deque<NameEntry>          _names[2];
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FastInfosetParser_INCLUDED
