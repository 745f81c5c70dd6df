//
// FastInfosetWriter.h
//
// Library: FastInfoset
// Module:  FastInfosetWriter
//


#ifndef FastInfoset_FastInfosetWriter_INCLUDED
#define FastInfoset_FastInfosetWriter_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/Encoding.h"
#include "Ixor/FastInfoset/EncodingAlgorithm.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/FISDocumentHandler.h"
#include "Ixor/FastInfoset/Notation.h"
#include "Ixor/FastInfoset/UnparsedEntity.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/SAX/NamespaceSupport.h"
#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>


namespace Ixor {
namespace FastInfoset {


template <class T> class MapVocabulary;
template <class T> class HashVocabulary;


class FastInfoset_API FastInfosetWriter:
	public FISContentHandler,
	public Ixor::XML::LexicalHandler,
	public Ixor::XML::DTDHandler,
	public FISDocumentHandler
	/// Writes the SAX events of one document as a Fast Infoset document to a
	/// caller-owned output stream.
	///
	/// Names and strings that were written before go out as small indexes
	/// into the document vocabulary; when a table can take no more entries
	/// (a full hash table, or the format's limit of 2^20 indexes), new ones
	/// are written in full and the document stays correct. Typed values
	/// given through the FISContentHandler operations are kept until the
	/// next event of another kind and written as one encoded string per run
	/// of one algorithm.
	///
	/// The header goes out with the root element (or with endDocument() when
	/// there is none), so notations and unparsed entities declared before
	/// it, inside the document type declaration as an XML parser reports
	/// them, still go into it; comments, processing instructions and the
	/// document type declaration before the root element wait for it.
	///
	/// A writer writes one document; the output stream must outlive it, and
	/// the next writer on the same stream writes the next document. Event
	/// sequences that make no document raise FISException and are refused
	/// before anything of them is written where the writer can tell: events
	/// before startDocument() or after endDocument(), an endElement() that
	/// does not match the open element, endDocument() with open elements, a
	/// second root element, text outside the root element, an attribute
	/// given twice, names that are not XML names (checked the first time a
	/// name is written in full), "Tag mismatch" and "Cannot nest CDATA
	/// sections". A failing stream raises Ixor::IOException "error while
	/// writing Fast Infoset document to stream". The octets reach the stream
	/// in blocks and all of them by endDocument(); destroying the writer
	/// completes a document cut short.
{
public:
	enum State
	{
		UNINITIALIZED = 0,
		DOCUMENT      = 1,
		ELEMENT       = 2,
		CDATA_SECTION = 3,
		DTD           = 4
	};

	struct AttributeValue
		/// One attribute ready to be written.
	{
		std::string prefix;
		std::string value;
		std::string namespaceURI;
		std::string localName;
	};

	explicit FastInfosetWriter(std::ostream& out);
		/// A writer with hash tables and no XML declaration.

	FastInfosetWriter(std::ostream& out, bool writeXMLDeclaration, DocumentVocabulary::VocabularyImpl impl);
		/// A writer with tables of the given kind (VOC_HASH or VOC_MAP; hash
		/// tables have fixed capacities, map tables grow without limit).

	FastInfosetWriter(std::ostream& out, bool writeXMLDeclaration, const DocumentVocabulary& vocabulary);
		/// A writer that starts from a copy of vocabulary; what it holds
		/// beyond a fresh vocabulary is written as the initial vocabulary.

	~FastInfosetWriter();

	// ContentHandler
	void setDocumentLocator(const Ixor::XML::Locator* pLocator);
	void startDocument();
	void endDocument();
	void startElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname, const Ixor::XML::Attributes& attributes);
	void endElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname);
	void characters(const Ixor::XML::XMLChar ch[], int start, int length);
		/// Writes ch[start, start + length); a zero character in that range
		/// ends the text. Empty text writes nothing.
	void ignorableWhitespace(const Ixor::XML::XMLChar ch[], int start, int length);
	void processingInstruction(const Ixor::XML::XMLString& target, const Ixor::XML::XMLString& data);
	void startPrefixMapping(const Ixor::XML::XMLString& prefix, const Ixor::XML::XMLString& uri);
	void endPrefixMapping(const Ixor::XML::XMLString& prefix);
	void skippedEntity(const Ixor::XML::XMLString& name);

	// FISContentHandler
	void binaryData(const char* data, std::size_t length);
	void encodedData(short value);
	void encodedData(int value);
	void encodedData(long value);
	void encodedData(bool value);
	void encodedData(float value);
	void encodedData(double value);
	void encodedData(const Ixor::UUID& value);

	// LexicalHandler
	void startCDATA();
		/// Throws FISException "Cannot nest CDATA sections" inside a CDATA
		/// section. Character data of the section goes out with the CDATA
		/// encoding algorithm.
	void endCDATA();
	void comment(const Ixor::XML::XMLChar ch[], int start, int length);
		/// Writes the length characters at ch + start. Comments inside the
		/// document type declaration are not written: the format gives it no
		/// comment children.
	void startDTD(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString& publicId, const Ixor::XML::XMLString& systemId);
	void endDTD();
	void startEntity(const Ixor::XML::XMLString& name);
	void endEntity(const Ixor::XML::XMLString& name);

	// DTDHandler
	// Both are taken until the root element starts; later they throw
	// FISException.
	void notationDecl(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString* publicId, const Ixor::XML::XMLString* systemId);
	void unparsedEntityDecl(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString* publicId, const Ixor::XML::XMLString& systemId, const Ixor::XML::XMLString& notationName);

	// FISDocumentHandler
	void setDocumentVocabulary(const DocumentVocabulary& vocabulary);
		/// Throws Ixor::InvalidArgumentException for a VOC_VECTOR vocabulary.
	DocumentVocabulary& getDocumentVocabulary();
	const DocumentVocabulary& getDocumentVocabulary() const;
	void setWriteXMLDeclaration(bool write);
		/// Whether the document starts with "<?xml encoding='finf'?>".
	void setExternalVocabulary(const std::string& uri, const DocumentVocabulary& vocabulary);
		/// The document names uri as its external vocabulary and writes only
		/// what its vocabulary holds beyond vocabulary. A writer whose
		/// vocabulary does not start with vocabulary's entries (a fresh one,
		/// say) starts from a copy of vocabulary (vector tables are copied
		/// into map tables), so that names and strings the vocabulary holds
		/// go out as indexes. The indexed length (see
		/// setMaxIndexedStringLength()) grows to the longest attribute value,
		/// character chunk or other string of vocabulary, so that they are
		/// looked up. Call it before startDocument().

	// Document building
	void startElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname);
	void emptyElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname);
	void emptyElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname, const Ixor::XML::Attributes& attributes);
	void dataElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname,
		const Ixor::XML::XMLString& data,
		const Ixor::XML::XMLString& attr1 = Ixor::XML::XMLString(), const Ixor::XML::XMLString& value1 = Ixor::XML::XMLString(),
		const Ixor::XML::XMLString& attr2 = Ixor::XML::XMLString(), const Ixor::XML::XMLString& value2 = Ixor::XML::XMLString(),
		const Ixor::XML::XMLString& attr3 = Ixor::XML::XMLString(), const Ixor::XML::XMLString& value3 = Ixor::XML::XMLString());
		/// An element without namespace holding data, with up to three
		/// attributes (those with an empty name are left out).
	void characters(const std::string& text);
		/// Writes text as one character chunk; empty text writes nothing.
	void startFragment();
	void endFragment();
		/// Fragments are not supported: both throw FISException.

	void setMaxIndexedStringLength(int length);
		/// Attribute values, character chunks, comments and processing
		/// instruction data of at most length octets enter the vocabulary
		/// and repeat as indexes; longer ones are always written in full.
		/// The default is 16.

	int getMaxIndexedStringLength() const;

protected:
	// Header and declarations
	void writeHeader();
	void writeInitialVocabulary(const DocumentVocabulary& vocabulary);
	void writeExternalVocabulary(const std::string& uri);
	void writeRestrictedAlphabet(const DocumentRestrictedAlphabet& alphabets);
	void writeVocabulary(const Vocabulary<std::string>& voc);
	void writeEncodedVocabulary(const Vocabulary<std::string>& voc);
	void writeNameSurrogates(const Vocabulary<QualifiedNameEntry>& voc, bool element);
	void writeNotations(const std::vector<Notation>& notations);
	void writeNotation(const std::string& name, const std::string* publicId, const std::string* systemId);
	void writeUnparsedEntities(const std::vector<UnparsedEntity>& unparsedEntities);
	void writeUnparsedEntity(const std::string& name, const std::string* publicId, const std::string& systemId, const std::string& notationName);
	void writeDocumentTypeDeclaration(const std::string& publicId, const std::string& systemId);
	void writeComment(const std::string& text);
	void writeUnexpandedEntityReference(const std::string& name, const std::string* systemId, const std::string* publicId);
	void writeProcessingInstruction(const std::string& target, const std::string& data);

	// Elements and attributes
	void handleNamespaces(const Ixor::XML::Attributes& attributes);
	void addNamespaceAttributes();
	void addAttributes(const Ixor::XML::Attributes& attributes);
	void writeElement(const std::string& prefix, const std::string& uri, const std::string& localName);
	void writeAttribute(const std::string& prefix, const std::string& uri, const std::string& localName, const std::string& value);

	// Names and strings
	unsigned int writeIdentifyingStringOrIndex(const std::string& str, DocumentVocabulary::ID voc);
	void writeIdentifyingStringIndex(unsigned int index);
	void writeIdentifyingString(const std::string& str, DocumentVocabulary::ID voc);
	unsigned int writeNonIdentifyingStringOrIndex(const std::string& str, DocumentVocabulary::ID voc);
	unsigned int writeNonIdentifyingStringOrIndex(Ixor::AutoPtr<Encoding>& value, DocumentVocabulary::ID voc);
	unsigned int writeNonIdentifyingStringOrIndex(const char* data, std::size_t length, DocumentVocabulary::ID voc);
	void writeEncodedCharacterString(const std::string& str, unsigned int algorithm);
	void writeEncodedCharacterString(Ixor::AutoPtr<Encoding>& value);
	void writeEncodedCharacterString(const char* data, std::size_t length, unsigned int algorithm);
	unsigned int writeCharacterChunk(const std::string& str);
	unsigned int writeQualifiedNameOrIndex(const std::string& prefix, const std::string& namespaceURI, const std::string& localName, bool element);
	unsigned int writeQualifiedName(const std::string& prefix, const std::string& namespaceURI, const std::string& localName, bool element);
	unsigned int writeQualifiedName(const QualifiedNameEntry& name, bool element);
	unsigned int insertQualifiedName(const QualifiedNameEntry& name, bool element);
	Vocabulary<QualifiedNameEntry>& getQNameVocabulary(bool element);
	void writeNamespaceAttribute(const std::string& prefix, const std::string& namespaceURI);
	void insertEncoding(const Ixor::AutoPtr<Encoding>& value);
	void handleEncodedData();
	std::string nameToString(const std::string& localName, const std::string& qname) const;
	std::string newPrefix();

private:
	FastInfosetWriter(const FastInfosetWriter&);
	FastInfosetWriter& operator = (const FastInfosetWriter&);

	enum Progress
		/// Where the writer stands in its one document.
	{
		NOT_STARTED,
		PROLOG,        // started; the header waits for the root element
		BODY,          // the header is written
		ENDED
	};

	struct PrologItem
		/// An event before the root element, kept until the header is out.
	{
		enum Kind
		{
			PI,
			COMMENT,
			DTD_START,
			DTD_END
		};
		Kind        kind;
		std::string first;    // target, text or public identifier
		std::string second;   // data or system identifier
	};

	struct StoredName
		/// The parts of a written name as the vocabulary holds them (they stay
		/// in place while its tables do), or null where it holds none.
	{
		const std::string* pPrefix;
		const std::string* pURI;
		const std::string* pLocalName;
	};

	struct OpenElement
		/// An element whose end is awaited, for the check of its end event:
		/// the parts of its name where the vocabulary holds them, or copies.
	{
		StoredName  name;
		UInt64      revision;    // of the vocabulary when the element started
		int         copies;      // how many of its parts are copies

		bool matches(const std::string& endURI, const std::string& endLocalName, const std::string& endQName, UInt64 currentRevision) const;
		std::string toString() const;
	};

	void startBody(const char* event);
	void writeProlog();
	[[noreturn]] void refuse(const char* event, const std::string& name = std::string()) const;
	void writeDTDStart(const std::string& publicId, const std::string& systemId);
	void writeDTDEnd();
	void writeCommentItem(const std::string& text);
	void writePIItem(const std::string& target, const std::string& data);
	void choosePrefix(std::size_t attribute, const std::string& qname);
	bool prefixUsedHere(const std::string& prefix, std::size_t before) const;
	const std::string& attributePrefixOf(const std::string& uri);
	void checkDistinctAttributes();
	void checkName(const std::string& name, DocumentVocabulary::ID voc) const;
	unsigned int writeName(const std::string& prefix, const std::string& namespaceURI, const std::string& localName, bool element, StoredName* pStored);
	unsigned int writeLiteralName(const std::string& prefix, const std::string& namespaceURI, const std::string& localName, bool element, unsigned int parts[3]);
	void storeParts(const unsigned int parts[3], StoredName& stored);
	int keepNameParts(const std::string& uri, const std::string& localName);
	void writeText(const char* text, std::size_t length);
	bool writeStringFast(const char* data, std::size_t length, DocumentVocabulary::ID voc, unsigned int lead, int leadSize);
	template <class E, class... Values>
	void appendValue(unsigned int type, const Values&... values);
	template <class E>
	E* reusable(unsigned int type);

	struct LastLookup
		/// The last string found in one table: prefixes and namespace names
		/// repeat from element to element.
	{
		const void*        pTable;
		std::string        value;
		unsigned int       index;
		const std::string* pStored;   // the value as the table holds it
	};
	unsigned int cachedLookup(DocumentVocabulary::ID id, const std::string& value, LastLookup& last);
	void init();

	// Namespace support with memory: a writer asks for the prefix of the
	// same namespace name element after element, and the answer changes
	// only when a declaration comes or goes.
	bool isMapped(const std::string& uri);
	const std::string& mappedURI(const std::string& prefix);
	void declarePrefix(const std::string& prefix, const std::string& uri);
	void pushContext();
	void popContext();
	unsigned int lookup(DocumentVocabulary::ID id, const char* data, std::size_t length);
	unsigned int indexOf(DocumentVocabulary::ID id, const char* data, std::size_t length, bool& existed);
	unsigned int lookupName(const QualifiedNameEntry& name, bool element);

	struct StringTableView
		/// A string table of the vocabulary seen as its concrete kind, so
		/// that lookups take octets and make no virtual call.
	{
		const Vocabulary<std::string>* pTable;
		const MapVocabulary<std::string>* pMap;
		const HashVocabulary<std::string>* pHash;
	};

	StringTableView& viewOf(DocumentVocabulary::ID id);
	void checkViews();
	void writeInteger(unsigned int value);
	void refreshViews();

	struct NameTableView
	{
		const Vocabulary<QualifiedNameEntry>* pTable;
		const MapVocabulary<QualifiedNameEntry>* pMap;
		const HashVocabulary<QualifiedNameEntry>* pHash;
	};
	NameTableView& nameViewOf(bool element);
	void pushState(State state);
	void popState();
	const std::string& prefixOf(const std::string& uri);

	typedef std::vector<std::pair<std::string, std::string>> Declarations;

	BitStreamWriter                        _writer;
	bool                                   _writeXMLDeclaration;
	DocumentVocabulary                     _vocabulary;
	std::vector<State>                     _states;
	int                                    _prefixCounter;
	Ixor::XML::NamespaceSupport            _namespaces;
	std::vector<Ixor::AutoPtr<Encoding>>   _pendingEncodings;
	std::vector<Notation>                  _notations;
	std::vector<UnparsedEntity>            _unparsedEntities;
	DocumentVocabulary                     _externalVocabulary;
	std::string                            _externalVocabularyURI;
	EncodingAlgorithm                      _encodingAlgorithm;
	int                                    _maxIndexedStringLength;

	// Scratch space reused by every element, so that writing an element
	// allocates nothing once the buffers have grown.
	std::string                            _prefix;
	std::string                            _qnamePrefix;
	std::string                            _qnameLocal;
	std::string                            _text;
	Declarations                           _declarations;
	std::size_t                            _declarationCount;
	std::vector<AttributeValue>            _attributeValues;
	std::size_t                            _attributeCount;
	Ixor::XML::NamespaceSupport::PrefixSet _declaredPrefixes;
	StringTableView                        _views[DocumentVocabulary::CONTENT_CHARACTER_CHUNK + 1];
	NameTableView                          _nameViews[2];

	struct PendingAttribute
	{
		const std::string* pURI;
		const std::string* pLocalName;
		const std::string* pValue;
		std::string        prefix;
		std::string        localName;   // when the attribute gave only a qualified name
	};
	std::vector<PendingAttribute>          _pendingAttributes;
	std::vector<std::size_t>               _attributeSlots;   // scratch of the check for attributes given twice

	Ixor::AutoPtr<Encoding>                _spareEncodings[10];   // one reusable value per algorithm, by index
	struct NameCacheSlot
		/// A qualified name found before: its prefix and namespace indexes,
		/// its local name as stored in the local-name table, and its index.
	{
		const void*        pNameTable;
		const void*        pLocalTable;
		const std::string* pLocalName;
		UInt32             hash;
		unsigned int       prefixIndex;
		unsigned int       namespaceIndex;
		unsigned int       index;
	};
	enum
	{
		NAME_CACHE_SIZE = 512
	};
	NameCacheSlot                          _nameCache[2][NAME_CACHE_SIZE];
	UInt64                                 _viewsRevision;
	LastLookup                             _lastPrefix;
	LastLookup                             _lastNamespace;

	UInt64                                 _namespaceGeneration;
	std::vector<bool>                      _contextDeclares;
	bool                                   _emptyURIMapped;
	std::string                            _prefixCacheURI;
	std::string                            _prefixCachePrefix;
	bool                                   _prefixCacheMapped;
	UInt64                                 _prefixCacheGeneration;
	std::string                            _uriCachePrefix;
	std::string                            _uriCacheURI;
	UInt64                                 _uriCacheGeneration;
	std::string                            _attributePrefixURI;
	std::string                            _attributePrefix;
	UInt64                                 _attributePrefixGeneration;

	Progress                               _progress;
	std::vector<PrologItem>                _prolog;
	std::vector<OpenElement>               _openElements;
	std::vector<std::unique_ptr<std::string>> _openNameCopies;   // parts of open names that no table holds, in place
	std::size_t                            _depth;          // open elements
	bool                                   _rootStarted;
	StoredName                             _elementName;    // of the element writeElement() wrote last
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FastInfosetWriter_INCLUDED
