//
// FastInfosetParser.h
//
// Library: FastInfoset
// Module:  FastInfosetParser
//


#ifndef FastInfoset_FastInfosetParser_INCLUDED
#define FastInfoset_FastInfosetParser_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Poco/SAX/AttributesImpl.h"
#include "Poco/SAX/XMLReader.h"
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>


namespace Ixor {
namespace FastInfoset {


class BitStreamReader;
class FastInfosetWriter;
class FISContentHandler;
class FISDocumentHandler;
class ItemReader;
class VocabularyFileLoader;


class FastInfoset_API FastInfosetParser: public Ixor::XML::XMLReader
	/// A SAX2 reader of Fast Infoset documents.
	///
	/// It reports the events the host's SAXParser reports for the same
	/// document as XML, with the same settings of the namespaces and
	/// namespace-prefixes features: qualified names of elements and
	/// attributes ("prefix:local" or "local") with namespace prefixes on and
	/// empty ones with them off, attributes of type "CDATA" in an
	/// Ixor::XML::AttributesImpl, and endPrefixMapping() after each
	/// element's endElement(), for that element's own declarations, last
	/// declared first. Strings handed to callbacks are valid only during the
	/// callback.
	///
	/// When the content handler is also a FISContentHandler, the values of
	/// the built-in encoding algorithms arrive as typed values; otherwise
	/// their text form goes to characters().
	///
	/// Deliberate behaviours: the document type declaration is reported with
	/// an empty name (the format does not carry it); entity references and
	/// the character encoding scheme, standalone and version components are
	/// read and reported to nobody.
	///
	/// Bad input raises FISParseException, FISEncodingException or
	/// FISException, and nothing else; the message ends with
	/// " (at octet N)", N the offset from the first octet of the document
	/// of the octet where the fault was found. An error handler, when one is
	/// set, receives fatalError() with the same message first. Exceptions
	/// that handlers throw pass through unchanged. A stream that fails
	/// raises Ixor::IOException.
	///
	/// Limits for documents from strangers: external vocabularies are loaded
	/// only when allowed; elements nest at most getMaxElementDepth() deep;
	/// an element declares at most getMaxNamespaceDeclarations() namespaces;
	/// what the parser delivers by index (text, names) is limited by
	/// getAmplificationThreshold() and getMaxAmplification(). Memory stays
	/// within a small factor of the input plus the strings of a vocabulary
	/// given in advance.
{
public:
	static const std::string EMPTY_STRING;

	static const std::size_t DEFAULT_MAX_ELEMENT_DEPTH = 10000;
	static const std::size_t DEFAULT_MAX_NAMESPACE_DECLARATIONS = 10000;
	static const Ixor::UInt64 DEFAULT_MAX_EXTERNAL_VOCABULARY_SIZE = 64 * 1024 * 1024;
	static const Ixor::UInt64 DEFAULT_AMPLIFICATION_THRESHOLD = 8 * 1024 * 1024;
	static constexpr double DEFAULT_MAX_AMPLIFICATION = 100.0;

	explicit FastInfosetParser(DocumentVocabulary::VocabularyImpl impl = DocumentVocabulary::VOC_VECTOR);
		/// A parser whose vocabulary has tables of the given kind. Vector
		/// tables give every literal its own index, as the format requires.

	explicit FastInfosetParser(const DocumentVocabulary& vocabulary);
		/// A parser that knows vocabulary in advance: every document that
		/// names its URI as external vocabulary starts from it as it was
		/// given, without loading anything. The parser holds it in vector
		/// tables, whatever kind it was given with, so that a document's
		/// literals take the next indexes.

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
		/// The error handler receives fatalError() before the parser throws
		/// for bad input.
	void setFeature(const Ixor::XML::XMLString& featureId, bool state);
		/// Namespaces are always on (turning them off throws
		/// SAXNotSupportedException); namespace prefixes select whether
		/// elements and attributes are reported with their qualified names.
	bool getFeature(const Ixor::XML::XMLString& featureId) const;
	void setProperty(const Ixor::XML::XMLString& propertyId, const Ixor::XML::XMLString& value);
	void setProperty(const Ixor::XML::XMLString& propertyId, void* value);
		/// The declaration handler and the lexical handler.
	void* getProperty(const Ixor::XML::XMLString& propertyId) const;
	void parse(Ixor::XML::InputSource* pSource);
		/// Reads one document from the source's byte stream, else its
		/// character stream, else its system identifier.
		///
		/// The stream is left just after the document's last octet, so that
		/// the next parse() of the same stream reads the next document. The
		/// parser reads ahead in blocks: it seeks the stream back over what
		/// it read beyond the document, and where the stream cannot seek, it
		/// keeps those octets and the next parse() of the same stream object
		/// begins with them (parsing any other source drops them).
	void parse(const Ixor::XML::XMLString& systemId);
		/// Opens the system identifier through the host's URI streams.
	void parseMemoryNP(const char* data, std::size_t size);
		/// Reads the document at the start of the block in place; it is not
		/// copied. Octets after the document are not read: the next
		/// document, if any, starts lastDocumentSize() octets on.

	Ixor::UInt64 lastDocumentSize() const;
		/// The octets of the last document read whole, its first octet
		/// through its last.

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
		/// loaded (default: no; a document could name any file). When off,
		/// a document naming one raises FISException "External vocabulary
		/// loading is disabled (FastInfosetParser::setLoadExternalVocabularies)"
		/// with the URI; a vocabulary given in advance under the URI is
		/// still used. When on, only regular local files are read (a file
		/// URI or a path), of at most getMaxExternalVocabularySize() octets:
		/// a path ending in ".xml" as XML, anything else as Fast Infoset.
		/// Vocabularies may name vocabularies, at most eight deep.

	void setMaxExternalVocabularySize(Ixor::UInt64 octets);
	Ixor::UInt64 getMaxExternalVocabularySize() const;
		/// The largest external vocabulary file read (default 64 MiB);
		/// larger ones raise FISException.

	void loadExternalVocabulary(const std::string& uri, DocumentVocabulary& vocabulary) const;
		/// Fills vocabulary as a document naming uri as its external
		/// vocabulary would: with the vocabulary given in advance when its
		/// URI is uri, else from the file when loading is allowed, else
		/// FISException.

	void setAmplificationThreshold(Ixor::UInt64 octets);
	Ixor::UInt64 getAmplificationThreshold() const;
	void setMaxAmplification(double factor);
	double getMaxAmplification() const;
		/// What a document delivers by index (text of character chunks,
		/// attribute values, comments, instruction data and other strings
		/// taken from a table, and the part of names beyond 64 octets) is
		/// counted. Once the count is above both the threshold (default 8
		/// MiB) and factor times the octets read (default 100), the parse
		/// stops with FISParseException "Amplification limit exceeded".

	void setMaxNamespaceDeclarations(std::size_t count);
	std::size_t getMaxNamespaceDeclarations() const;
		/// The most namespace declarations accepted on one element (default
		/// 10000); more raise FISParseException "Maximum number of namespace
		/// declarations exceeded".

	void setMaxElementDepth(std::size_t depth);
	std::size_t getMaxElementDepth() const;
		/// The deepest nesting of elements accepted (default 10000).

private:
	class Dispatch;
	friend class VocabularyFileLoader;

	FastInfosetParser(const FastInfosetParser&);
	FastInfosetParser& operator = (const FastInfosetParser&);

	void init();
	void parseStream(std::istream& stream);
	void parseReader(BitStreamReader& r);

	Ixor::XML::EntityResolver*     _pEntityResolver;
	Ixor::XML::DTDHandler*         _pDTDHandler;
	Ixor::XML::ContentHandler*     _pContentHandler;
	Ixor::XML::ErrorHandler*       _pErrorHandler;
	Ixor::XML::DeclHandler*        _pDeclHandler;
	Ixor::XML::LexicalHandler*     _pLexicalHandler;
	FISDocumentHandler*            _pDocumentHandler;
	FISContentHandler*             _pFISContentHandler;
	bool                           _namespacePrefixes;
	std::unique_ptr<ItemReader>    _pItems;        // the reading of documents, and their vocabulary
	std::unique_ptr<Dispatch>      _pDispatch;     // the handing of their items to the handlers
	std::unique_ptr<DocumentVocabulary> _pGivenVocabulary;
	std::size_t                    _maxElementDepth;
	std::size_t                    _maxNamespaceDeclarations;
	bool                           _loadExternalVocabularies;
	Ixor::UInt64                   _maxExternalVocabularySize;
	int                            _vocabularyNesting;
	Ixor::UInt64                   _amplificationThreshold;
	double                         _maxAmplification;
	Ixor::UInt64                   _lastDocumentSize;
	std::istream*                  _pPendingStream;
	std::string                    _pendingOctets;
	bool                           _inputInMemory;
};


//
// inlines
//
inline Ixor::UInt64 FastInfosetParser::lastDocumentSize() const
{
	return _lastDocumentSize;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FastInfosetParser_INCLUDED
