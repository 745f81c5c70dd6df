#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/FISDocumentHandler.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/NullEncoding.h"
#include "Ixor/FastInfoset/NullRefEncoding.h"
#include "Ixor/FastInfoset/StringDecoder.h"
#include "Poco/NumberFormatter.h"
#include "Poco/SAX/ContentHandler.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/EntityResolverImpl.h"
#include "Poco/SAX/ErrorHandler.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/SAX/SAXException.h"
#include "Poco/XML/XMLWriter.h"
#include "FastDecoding.h"
#include "VocabularyFileLoader.h"
#include <climits>
#include <cstdint>


using Ixor::XML::XMLString;
using Ixor::XML::XMLReader;


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const END_OF_CHILDREN = "Unexpected end of stream while parsing element children";
	const char* const END_OF_ELEMENT = "Unexpected end of stream while parsing element";
	const char* const BAD_CHILD = "Parse error: unknown element child code";
	const char* const BAD_NOTATION_POSITION = "Illegal startposition for a Notation value";
	const char* const BAD_STRING_POSITION = "Illegal startposition for a NonIdentifyingStringOrIndex value";
	const char* const BAD_ENCODED_POSITION = "Illegal startposition for an encodedCharacterString";
	const std::size_t SCRATCH_SIZE = 1024;

	const unsigned int CDATA_ALGORITHM = 10;
	const std::string CDATA_TYPE("CDATA");
	const unsigned int ABSENT = 0xFFFFFFFF;

	// Elements with fewer attributes than this are reported in lists that
	// are kept, so that their strings keep their capacity: so many lists
	// for each number of attributes.
	const std::size_t POOLED_ATTRIBUTE_COUNTS = 32;
	const std::size_t ATTRIBUTE_LISTS_PER_COUNT = 4;
	// Strings of the lists longer than this are released after the element
	// is reported, so that what the lists hold stays small.
	const std::size_t RETAINED_ATTRIBUTE_OCTETS = 256;

	// The octets of a name that a report may deliver without counting
	// against amplification: real names are shorter.
	const std::size_t NAME_ALLOWANCE = 64;

	// Qualified names kept for reuse: a constant plus this many octets for
	// each octet read; each kept name also costs its bookkeeping.
	const UInt64 QNAME_BUDGET = 64 * 1024;
	const UInt64 QNAME_BUDGET_PER_OCTET = 2;
	const UInt64 QNAME_OVERHEAD = 64;

	const char* const TABLE_NAMES[] =
	{
		"restricted alphabet", "encoding algorithm", "prefix", "namespace name", "local name", "other NCName",
		"other URI", "attribute value", "other string", "content character chunk", "element name", "attribute name"
	};

	class FaultReport: public Ixor::XML::SAXParseException
		/// What an error handler receives: the message of the exception that
		/// follows, as it stands (the host's own adds a location in words).
	{
	public:
		explicit FaultReport(const std::string& text):
			Ixor::XML::SAXParseException(text, std::string(), std::string(), 0, 0)
		{
			message(text);
		}
	};


	[[noreturn]] void noEntry(int table, unsigned int index)
	{
		throw FISEncodingException(std::string("Index ") + Poco::NumberFormatter::format(index)
			+ " names no entry of the " + TABLE_NAMES[table] + " table");
	}
}


const std::string FastInfosetParser::EMPTY_STRING;
const std::size_t FastInfosetParser::DEFAULT_MAX_ELEMENT_DEPTH;
const std::size_t FastInfosetParser::DEFAULT_MAX_NAMESPACE_DECLARATIONS;
const Ixor::UInt64 FastInfosetParser::DEFAULT_MAX_EXTERNAL_VOCABULARY_SIZE;
const Ixor::UInt64 FastInfosetParser::DEFAULT_AMPLIFICATION_THRESHOLD;
constexpr double FastInfosetParser::DEFAULT_MAX_AMPLIFICATION;


FastInfosetParser::ResolvedQualName::ResolvedQualName():
	pPrefix(0),
	pUri(0),
	pLocalName(0)
{
}


FastInfosetParser::NameEntry::NameEntry():
	pQName(0),
	excess(0),
	resolved(false)
{
}


FastInfosetParser::FastInfosetParser(DocumentVocabulary::VocabularyImpl impl):
	_vocabulary(impl)
{
	init();
}


FastInfosetParser::FastInfosetParser(const DocumentVocabulary& vocabulary):
	_vocabulary(vocabulary),
	_pGivenVocabulary(new DocumentVocabulary(vocabulary))
{
	init();
}


void FastInfosetParser::init()
{
	_alphabets = _vocabulary.restrictedAlphabets();
	_pEntityResolver = 0;
	_pDTDHandler = 0;
	_pContentHandler = 0;
	_pErrorHandler = 0;
	_pDeclHandler = 0;
	_pLexicalHandler = 0;
	_pDocumentHandler = 0;
	_pFISContentHandler = 0;
	_namespacePrefixes = true;
	_maxElementDepth = DEFAULT_MAX_ELEMENT_DEPTH;
	_maxNamespaceDeclarations = DEFAULT_MAX_NAMESPACE_DECLARATIONS;
	_loadExternalVocabularies = false;
	_maxExternalVocabularySize = DEFAULT_MAX_EXTERNAL_VOCABULARY_SIZE;
	_vocabularyNesting = 0;
	_lastDocumentSize = 0;
	_pPendingStream = 0;
	_inHandler = false;
	_inputInMemory = false;
	_attributeCount = 0;
	_trimAttributes = false;
	_pReader = 0;
	_delivered = 0;
	_nextCheck = 0;
	_amplificationThreshold = DEFAULT_AMPLIFICATION_THRESHOLD;
	_maxAmplification = DEFAULT_MAX_AMPLIFICATION;
	_qnameOctets = 0;
	_namespaceDeclarations.reserve(16);
	_attributes.reserve(16);
	_attributeLists.resize(POOLED_ATTRIBUTE_COUNTS * ATTRIBUTE_LISTS_PER_COUNT);
	_xmlDeclaration.reserve(SCRATCH_SIZE);
	_identifying.reserve(SCRATCH_SIZE);
	_octets.reserve(SCRATCH_SIZE);
	_text.reserve(SCRATCH_SIZE);
	_pLiteralValue = new NullEncoding();
	_pIndexedValue = new NullRefEncoding(EMPTY_STRING);
}


FastInfosetParser::~FastInfosetParser()
{
}


//
// Handlers, features and properties
//
void FastInfosetParser::setEntityResolver(Ixor::XML::EntityResolver* pResolver)
{
	_pEntityResolver = pResolver;
}


Ixor::XML::EntityResolver* FastInfosetParser::getEntityResolver() const
{
	return _pEntityResolver;
}


void FastInfosetParser::setDTDHandler(Ixor::XML::DTDHandler* pDTDHandler)
{
	_pDTDHandler = pDTDHandler;
}


Ixor::XML::DTDHandler* FastInfosetParser::getDTDHandler() const
{
	return _pDTDHandler;
}


void FastInfosetParser::setContentHandler(Ixor::XML::ContentHandler* pContentHandler)
{
	_pContentHandler = pContentHandler;
	_pFISContentHandler = dynamic_cast<FISContentHandler*>(pContentHandler);
}


Ixor::XML::ContentHandler* FastInfosetParser::getContentHandler() const
{
	return _pContentHandler;
}


void FastInfosetParser::setErrorHandler(Ixor::XML::ErrorHandler* pErrorHandler)
{
	_pErrorHandler = pErrorHandler;
}


Ixor::XML::ErrorHandler* FastInfosetParser::getErrorHandler() const
{
	return _pErrorHandler;
}


void FastInfosetParser::setFeature(const XMLString& featureId, bool state)
{
	if (featureId == XMLReader::FEATURE_NAMESPACES)
	{
		if (!state) throw Ixor::XML::SAXNotSupportedException("namespace support cannot be disabled");
	}
	else if (featureId == XMLReader::FEATURE_NAMESPACE_PREFIXES)
	{
		_namespacePrefixes = state;
	}
	else throw Ixor::XML::SAXNotRecognizedException(featureId);
}


bool FastInfosetParser::getFeature(const XMLString& featureId) const
{
	if (featureId == XMLReader::FEATURE_NAMESPACES) return true;
	if (featureId == XMLReader::FEATURE_NAMESPACE_PREFIXES) return _namespacePrefixes;
	throw Ixor::XML::SAXNotRecognizedException(featureId);
}


void FastInfosetParser::setProperty(const XMLString& propertyId, const XMLString&)
{
	if (propertyId == XMLReader::PROPERTY_DECLARATION_HANDLER || propertyId == XMLReader::PROPERTY_LEXICAL_HANDLER)
		throw Ixor::XML::SAXNotSupportedException(std::string("property does not take a string value: ") + propertyId);
	throw Ixor::XML::SAXNotRecognizedException(propertyId);
}


void FastInfosetParser::setProperty(const XMLString& propertyId, void* value)
{
	if (propertyId == XMLReader::PROPERTY_DECLARATION_HANDLER)
		_pDeclHandler = reinterpret_cast<Ixor::XML::DeclHandler*>(value);
	else if (propertyId == XMLReader::PROPERTY_LEXICAL_HANDLER)
		_pLexicalHandler = reinterpret_cast<Ixor::XML::LexicalHandler*>(value);
	else
		throw Ixor::XML::SAXNotRecognizedException(propertyId);
}


void* FastInfosetParser::getProperty(const XMLString& propertyId) const
{
	if (propertyId == XMLReader::PROPERTY_DECLARATION_HANDLER) return _pDeclHandler;
	if (propertyId == XMLReader::PROPERTY_LEXICAL_HANDLER) return _pLexicalHandler;
	throw Ixor::XML::SAXNotRecognizedException(propertyId);
}


void FastInfosetParser::setDocumentHandler(FISDocumentHandler* pHandler)
{
	_pDocumentHandler = pHandler;
}


FISDocumentHandler* FastInfosetParser::getDocumentHandler() const
{
	return _pDocumentHandler;
}


const DocumentVocabulary& FastInfosetParser::vocabulary() const
{
	return _vocabulary;
}


void FastInfosetParser::initialize(FastInfosetWriter* pWriter)
{
	if (!pWriter) return;
	setContentHandler(pWriter);
	setDocumentHandler(pWriter);
	setDTDHandler(pWriter);
	setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(pWriter));
}


void FastInfosetParser::initialize(Ixor::XML::XMLWriter* pWriter)
{
	if (!pWriter) return;
	setContentHandler(pWriter);
	setDocumentHandler(dynamic_cast<FISDocumentHandler*>(pWriter));
	setDTDHandler(pWriter);
	setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(pWriter));
}


void FastInfosetParser::setLoadExternalVocabularies(bool load)
{
	_loadExternalVocabularies = load;
}


bool FastInfosetParser::getLoadExternalVocabularies() const
{
	return _loadExternalVocabularies;
}


void FastInfosetParser::setMaxExternalVocabularySize(Ixor::UInt64 octets)
{
	_maxExternalVocabularySize = octets;
}


Ixor::UInt64 FastInfosetParser::getMaxExternalVocabularySize() const
{
	return _maxExternalVocabularySize;
}


void FastInfosetParser::loadExternalVocabulary(const std::string& uri, DocumentVocabulary& vocabulary) const
{
	VocabularyFileLoader loader(*this);
	loader.load(uri, vocabulary);
}


void FastInfosetParser::setAmplificationThreshold(Ixor::UInt64 octets)
{
	_amplificationThreshold = octets;
}


Ixor::UInt64 FastInfosetParser::getAmplificationThreshold() const
{
	return _amplificationThreshold;
}


void FastInfosetParser::setMaxAmplification(double factor)
{
	_maxAmplification = factor;
}


double FastInfosetParser::getMaxAmplification() const
{
	return _maxAmplification;
}


void FastInfosetParser::setMaxNamespaceDeclarations(std::size_t count)
{
	_maxNamespaceDeclarations = count;
}


std::size_t FastInfosetParser::getMaxNamespaceDeclarations() const
{
	return _maxNamespaceDeclarations;
}


void FastInfosetParser::setMaxElementDepth(std::size_t depth)
{
	_maxElementDepth = depth;
}


std::size_t FastInfosetParser::getMaxElementDepth() const
{
	return _maxElementDepth;
}


//
// Parse entries
//
void FastInfosetParser::parse(Ixor::XML::InputSource* pSource)
{
	std::istream* pStream = pSource->getByteStream();
	if (!pStream) pStream = pSource->getCharacterStream();
	if (pStream) parseStream(*pStream);
	else parse(pSource->getSystemId());
}


void FastInfosetParser::parse(const XMLString& systemId)
{
	Ixor::XML::EntityResolverImpl resolver;
	Ixor::XML::InputSource* pSource = resolver.resolveEntity(0, systemId);
	if (!pSource) throw FISParseException("Cannot resolve system identifier", systemId);
	try
	{
		parse(pSource);
	}
	catch (...)
	{
		resolver.releaseInputSource(pSource);
		throw;
	}
	resolver.releaseInputSource(pSource);
}


void FastInfosetParser::parseMemoryNP(const char* data, std::size_t size)
{
	_pPendingStream = 0;
	_pendingOctets.clear();
	BitStreamReader reader(data, size);
	_inputInMemory = true;
	parseReader(reader);
}


void FastInfosetParser::parseStream(std::istream& stream)
	/// Reads one document and leaves the stream after it: what the reader
	/// took beyond the document goes back to the stream, or, when it cannot
	/// seek, waits here for the next parse of the same stream.
{
	std::string pending;
	if (_pPendingStream == &stream) pending.swap(_pendingOctets);
	_pPendingStream = 0;
	_pendingOctets.clear();
	BitStreamReader reader(stream, pending.data(), pending.size());
	_inputInMemory = false;
	parseReader(reader);
	reader.giveBack(_pendingOctets);
	if (!_pendingOctets.empty()) _pPendingStream = &stream;
}


void FastInfosetParser::parseReader(BitStreamReader& r)
	/// Faults of the input leave as exceptions of the library's family that
	/// say where they were found; those of handlers pass unchanged.
{
	_inHandler = false;
	try
	{
		parseDocument(r);
	}
	catch (const FISParseException& exc)
	{
		if (_inHandler) throw;
		fail<FISParseException>(r, exc.message(), exc.code());
	}
	catch (const FISEncodingException& exc)
	{
		if (_inHandler) throw;
		fail<FISEncodingException>(r, exc.message(), exc.code());
	}
	catch (const FISException& exc)
	{
		if (_inHandler) throw;
		fail<FISException>(r, exc.message(), exc.code());
	}
	catch (const Ixor::PoolOverflowException& exc)
	{
		// A table of fixed capacity, in a parser built with hash tables.
		if (_inHandler) throw;
		fail<FISException>(r, exc.message(), exc.code());
	}
}


template <class E>
void FastInfosetParser::fail(BitStreamReader& r, const std::string& message, int code)
{
	const std::string located = message + " (at octet " + Poco::NumberFormatter::format(static_cast<UInt64>(r.offset())) + ")";
	if (_pErrorHandler)
	{
		_pErrorHandler->fatalError(FaultReport(located));
	}
	throw E(located, code);
}


//
// Vocabulary views
//
inline const std::string& FastInfosetParser::stringAt(DocumentVocabulary::ID id, unsigned int index) const
{
	const std::vector<const std::string*>& strings = _strings[id];
	if (index >= strings.size()) noEntry(id, index);
	return *strings[index];
}


inline const std::string& FastInfosetParser::deliveredAt(DocumentVocabulary::ID id, unsigned int index)
	/// A string taken from a table to be reported: it counts as delivered.
{
	const std::string& text = stringAt(id, index);
	deliver(text.size());
	return text;
}


inline void FastInfosetParser::deliver(UInt64 octets)
{
	_delivered += octets;
	if (_delivered > _nextCheck) checkAmplification();
}


void FastInfosetParser::checkAmplification()
	/// The octets read only grow, so the limit found here holds until the
	/// count passes it again.
{
	double limit = _maxAmplification * static_cast<double>(_pReader->octetsConsumed());
	if (limit < static_cast<double>(_amplificationThreshold)) limit = static_cast<double>(_amplificationThreshold);
	if (static_cast<double>(_delivered) > limit)
	{
		throw FISParseException("Amplification limit exceeded: " + Poco::NumberFormatter::format(_delivered)
			+ " octets delivered by index from " + Poco::NumberFormatter::format(static_cast<UInt64>(_pReader->octetsConsumed()))
			+ " octets read (FastInfosetParser::setMaxAmplification, setAmplificationThreshold)");
	}
	_nextCheck = limit >= 1.8e19 ? ~UInt64(0) : static_cast<UInt64>(limit);
}


unsigned int FastInfosetParser::addString(DocumentVocabulary::ID id, const std::string& text)
{
	bool found = false;
	const unsigned int index = _vocabulary.index(id, text, found);
	syncStrings(id);
	return index;
}


void FastInfosetParser::syncStrings(DocumentVocabulary::ID id)
{
	const Vocabulary<std::string>& table = *_vocabulary.vocabulary(id);
	std::vector<const std::string*>& strings = _strings[id];
	for (std::size_t i = strings.size(), size = table.size(); i < size; ++i)
	{
		strings.push_back(&table.value(static_cast<unsigned int>(i)));
	}
}


void FastInfosetParser::syncTables()
	/// Rebuilds the views after the header has reset or filled the
	/// vocabulary. Names are resolved on first use only: a name of an
	/// initial vocabulary that no element uses never has to resolve.
{
	for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
	{
		_strings[id].clear();
		syncStrings(static_cast<DocumentVocabulary::ID>(id));
	}
	for (int element = 0; element < 2; ++element)
	{
		_names[element].clear();
		_names[element].resize(getQNameVocabulary(element != 0).size());
	}
	// The names the lists hold belong to the previous document.
	for (std::unique_ptr<AttributeList>& pList: _attributeLists)
	{
		if (!pList) continue;
		for (AttributeList::Slot& held: pList->slots)
		{
			held.pName = nullptr;
			held.pValue = nullptr;
		}
	}
	_qnameIndex.clear();
	_qnames.clear();
	_qnameOctets = 0;
}


inline const FastInfosetParser::NameEntry& FastInfosetParser::nameAt(unsigned int index, bool element)
{
	const std::deque<NameEntry>& names = _names[element];
	if (index < names.size() && names[index].resolved) return names[index];
	return resolveName(index, element);
}


const FastInfosetParser::NameEntry& FastInfosetParser::resolveName(unsigned int index, bool element)
{
	const Vocabulary<QualifiedNameEntry>& table = getQNameVocabulary(element);
	if (index >= table.size()) noEntry(element ? DocumentVocabulary::ELEMENT_NAME : DocumentVocabulary::ATTRIBUTE_NAME, index);
	const QualifiedNameEntry& entry = table.value(index);
	ResolvedQualName name;
	name.pPrefix = &resolve(DocumentVocabulary::PREFIX, entry.prefixId());
	name.pUri = &resolve(DocumentVocabulary::NAMESPACE_NAME, entry.namespaceId());
	name.pLocalName = &resolve(DocumentVocabulary::LOCAL_NAME, entry.localNameId());
	NameEntry& resolved = nameSlot(index, element);
	setName(resolved, name);
	return resolved;
}


const FastInfosetParser::NameEntry& FastInfosetParser::addName(const QualifiedNameEntry& entry, const ResolvedQualName& name, bool element)
{
	bool found = false;
	const unsigned int index = getQNameVocabulary(element).index(entry, found);
	NameEntry& added = nameSlot(index, element);
	if (!added.resolved) setName(added, name);
	return added;
}


FastInfosetParser::NameEntry& FastInfosetParser::nameSlot(unsigned int index, bool element)
{
	std::deque<NameEntry>& names = _names[element];
	if (names.size() <= index) names.resize(getQNameVocabulary(element).size());
	return names[index];
}


void FastInfosetParser::setName(NameEntry& entry, const ResolvedQualName& name)
{
	entry.name = name;
	// An unprefixed name is reported under its local name; a prefixed one
	// gets its "prefix:local" when first reported.
	entry.pQName = name.pPrefix->empty() ? name.pLocalName : 0;
	const std::size_t size = name.pPrefix->size() + name.pUri->size() + name.pLocalName->size();
	// Reported twice: by startElement() and endElement(), or by the element
	// and its copy in the attribute list.
	entry.excess = size > NAME_ALLOWANCE ? 2 * (size - NAME_ALLOWANCE) : 0;
	entry.resolved = true;
}


const std::string& FastInfosetParser::resolve(DocumentVocabulary::ID id, unsigned int index) const
{
	// A name from an initial vocabulary marks an absent prefix or namespace
	// with all bits set; it stands for no prefix or namespace, which the
	// tables cannot look up.
	if (index == ABSENT) return EMPTY_STRING;
	return stringAt(id, index);
}


inline const std::string& FastInfosetParser::qualifiedName(const NameEntry& name)
{
	if (!_namespacePrefixes) return EMPTY_STRING;
	if (name.pQName) return *name.pQName;
	return buildQualifiedName(name);
}


const std::string& FastInfosetParser::buildQualifiedName(const NameEntry& name)
	/// One "prefix:local" for each pair of strings, kept while the kept ones
	/// stay within their budget; past it, built afresh for each report.
{
	const std::pair<const std::string*, const std::string*> key(name.name.pPrefix, name.name.pLocalName);
	const auto found = _qnameIndex.find(key);
	if (found != _qnameIndex.end())
	{
		name.pQName = found->second;
		return *name.pQName;
	}
	const UInt64 size = name.name.pPrefix->size() + 1 + name.name.pLocalName->size();
	const UInt64 budget = QNAME_BUDGET + QNAME_BUDGET_PER_OCTET * _pReader->octetsConsumed();
	if (_qnameOctets + size + QNAME_OVERHEAD <= budget)
	{
		_qnames.emplace_back();
		std::string& qname = _qnames.back();
		qname.reserve(static_cast<std::size_t>(size));
		qname.append(*name.name.pPrefix).append(1, ':').append(*name.name.pLocalName);
		_qnameOctets += size + QNAME_OVERHEAD;
		_qnameIndex.emplace(key, &qname);
		name.pQName = &qname;
		return qname;
	}
	deliver(size);
	_qnameScratch.assign(*name.name.pPrefix).append(1, ':').append(*name.name.pLocalName);
	return _qnameScratch;
}


Vocabulary<QualifiedNameEntry>& FastInfosetParser::getQNameVocabulary(bool element)
{
	return element ? *_vocabulary.elementVocabulary() : *_vocabulary.attributeVocabulary();
}


const QualifiedNameEntry& FastInfosetParser::getQualifiedNameEntry(unsigned int index, bool element)
{
	const Vocabulary<QualifiedNameEntry>& table = getQNameVocabulary(element);
	if (index >= table.size()) noEntry(element ? DocumentVocabulary::ELEMENT_NAME : DocumentVocabulary::ATTRIBUTE_NAME, index);
	return table.value(index);
}


//
// Structure
//
void FastInfosetParser::parseDocument(BitStreamReader& r)
{
	_pReader = &r;
	_delivered = 0;
	_nextCheck = _amplificationThreshold;
	_openElements.clear();
	_declarationScopes.clear();
	_namespaceDeclarations.clear();
	_attributeCount = 0;
	// A reset keeps the alphabets, so those that the previous document added
	// would shift the indexes of this document's own: every document starts
	// from the alphabets the parser was built with.
	_vocabulary.restrictedAlphabets() = _alphabets;
	Decoder::documentPreHeader(r, _xmlDeclaration);
	if (_pDocumentHandler)
	{
		_inHandler = true;
		_pDocumentHandler->setWriteXMLDeclaration(!_xmlDeclaration.empty());
		_inHandler = false;
	}
	VocabularyFileLoader loader(*this);
	const Decoder::OpenHeaderParts parts = Decoder::documentHeader(r, _vocabulary, _pDocumentHandler, &loader);
	syncTables();
	if (_pDocumentHandler)
	{
		_inHandler = true;
		_pDocumentHandler->setDocumentVocabulary(_vocabulary);
		_inHandler = false;
	}
	parseDocumentChildren(r, parts);
	if (_pContentHandler)
	{
		_inHandler = true;
		_pContentHandler->startDocument();
		_inHandler = false;
	}
	parseElementChildren(r);
	// The document's terminator, and the padding of its last octet.
	r.skip(4);
	r.skipToByteStart();
	_lastDocumentSize = r.octetsConsumed();
	if (_pContentHandler)
	{
		_inHandler = true;
		_pContentHandler->endDocument();
		_inHandler = false;
	}
}


void FastInfosetParser::parseDocumentChildren(BitStreamReader& r, const Decoder::OpenHeaderParts& parts)
{
	if (parts.notations)
	{
		unsigned char id = 0;
		if (!r.read(id, 6)) throw FISParseException("Unexpected end of stream while parsing notation");
		while (id == 0x30)
		{
			parseNotation(r);
			if (!r.read(id, 6)) throw FISParseException("Unexpected end of stream while parsing notation");
		}
		if (id != 60) throw FISEncodingException("Invalid terminator of notations");
		r.skip(2);
	}
	if (parts.unparsedEntities)
	{
		unsigned char id = 0;
		if (!r.read(id, 7)) throw FISParseException("Unexpected end of stream while parsing unparsed entity");
		while (id == 0x68)
		{
			parseUnparsedEntity(r);
			if (!r.read(id, 7)) throw FISParseException("Unexpected end of stream while parsing unparsed entity");
		}
		if (id != 120) throw FISEncodingException("Invalid terminator of unparsed entities");
		r.skip(1);
	}
	if (parts.characterEncodingScheme)
	{
		r.skip(1);
		Decoder::nonEmptyOctetString(r, _octets);
	}
	if (parts.standalone)
	{
		bool standalone = false;
		r.skip(7);
		if (!r.read(standalone)) throw FISParseException("Unexpected end of stream while parsing standalone");
	}
	if (parts.version)
	{
		unsigned int algorithm = 0;
		parseNonIdentifyingStringOrIndexXML(r, DocumentVocabulary::OTHER_STRING, algorithm);
	}
}


void FastInfosetParser::parseElementChildren(BitStreamReader& r)
	/// Reads children until the terminator of the level it was called on,
	/// which stays in the stream. Nested elements are kept on a stack of
	/// their own instead of the call stack, so that deep documents cannot
	/// exhaust the call stack.
	///
	/// Elements and character chunks, nearly every item of a document, are
	/// told apart and started from one window of bits; the rest goes through
	/// parseElementChild().
{
	const std::size_t level = _openElements.size();
	// The window stays in step with the reader across the items decoded
	// here (terminators, chunks given by index); whatever reads through the
	// reader itself makes it stale.
	int available = 0;
	UInt64 window = 0;
	bool inStep = false;
	for (;;)
	{
		if (!inStep || available < 32)
		{
			window = r.window(available);
			inStep = true;
		}
		if (available < 4) throw FISParseException(END_OF_CHILDREN);
		if ((window >> 60) == 15)
		{
			if (_openElements.size() == level) return;
			// The four bits that end the innermost open element.
			r.advance(4);
			window <<= 4;
			available -= 4;
			const NameEntry& element = *_openElements.back();
			_openElements.pop_back();
			endElement(element);
			continue;
		}

		// A child starts on the next octet.
		const int skip = (8 - r.bitPos()) & 7;
		if (available < skip + 8) throw FISParseException(END_OF_CHILDREN);
		window <<= skip;
		available -= skip;
		const unsigned int code = static_cast<unsigned int>(window >> 56);
		if ((code & 0xE0) == 0xA0)
		{
			// 10 chunk, 1 index: the index at the fourth bit.
			unsigned int index = 0;
			int size = 0;
			if (FastDecoding::integerAt(3, window << 3, available - 3, index, size))
			{
				r.advance(skip + 3 + size);
				window <<= 3 + size;
				available -= 3 + size;
				const std::string& text = deliveredAt(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, index);
				characters(text.data(), text.size());
				continue;
			}
		}
		inStep = false;
		if (code < 0x80)
		{
			r.advance(skip + 1);
			if (!parseElementFast(r, window << 1, available - 1)) parseElement(r);
		}
		else if ((code & 0xC0) == 0x80)
		{
			r.advance(skip + 2);
			if (!parseCharacterChunkFast(r, window << 2, available - 2)) parseCharacterChunk(r);
		}
		else
		{
			r.advance(skip);
			parseElementChild(r);
		}
	}
}


bool FastInfosetParser::parseElementFast(BitStreamReader& r, UInt64 window, int available)
	/// The start of an element without namespace attributes whose name is
	/// an index to a name already in use, from the window that begins at its
	/// attributes bit. Returns false, having read nothing, for everything
	/// else, which parseElement() reads.
{
	if (available < 7 || _openElements.size() >= _maxElementDepth) return false;
	if (((window >> 57) & 0x3F) == 0x38 || ((window << 1) >> 60) == 15) return false;
	unsigned int index = 0;
	int size = 0;
	if (!FastDecoding::integerAt(2, window << 1, available - 1, index, size)) return false;
	const std::deque<NameEntry>& names = _names[1];
	if (index >= names.size() || !names[index].resolved) return false;
	const NameEntry& element = names[index];
	r.advance(1 + size);

	_attributeCount = 0;
	if (window >> 63) parseAttributes(r);
	startElement(element);
	return true;
}


void FastInfosetParser::parseAttributes(BitStreamReader& r)
{
	for (;;)
	{
		int available = 0;
		const UInt64 window = r.window(available);
		if (available < 1) throw FISParseException(END_OF_ELEMENT);
		if (window >> 63) break;
		r.advance(1);
		// An attribute whose name is an index to a name in use and whose value
		// is an index: both from the same window.
		unsigned int nameIndex = 0;
		unsigned int valueIndex = 0;
		int nameSize = 0;
		int valueSize = 0;
		const UInt64 name = window << 1;
		if ((name >> 60) != 15 && FastDecoding::integerAt(1, name, available - 1, nameIndex, nameSize)
			&& nameIndex < _names[0].size() && _names[0][nameIndex].resolved)
		{
			const UInt64 value = name << nameSize;
			const int rest = available - 1 - nameSize;
			if (rest > 0 && (value >> 63) && FastDecoding::integerAt(1, value << 1, rest - 1, valueIndex, valueSize))
			{
				r.advance(nameSize + 1 + valueSize);
				addAttribute(_names[0][nameIndex], deliveredAt(DocumentVocabulary::ATTRIBUTE_VALUE, valueIndex));
				continue;
			}
			r.advance(nameSize);
			parseAttributeValueOf(r, _names[0][nameIndex]);
			continue;
		}
		parseAttribute(r);
	}
	// The 1 that ends the attributes and three more bits of the terminator.
	r.skip(4);
}


bool FastInfosetParser::parseElementChild(BitStreamReader& r)
{
	r.skipToByteStart();
	int available = 0;
	const UInt64 window = r.window(available);
	if (available < 8) throw FISParseException(END_OF_CHILDREN);
	const unsigned int code = static_cast<unsigned int>(window >> 56);
	if ((code & 0x80) == 0)
	{
		r.advance(1);
		parseElement(r);
	}
	else if ((code & 0xC0) == 0x80)
	{
		r.advance(2);
		parseCharacterChunk(r);
	}
	else if ((code & 0xE0) == 0xC0)
	{
		r.advance(6);
		if ((code & 0xFC) == 0xC4) parseDocumentTypeDeclaration(r);
		else if ((code & 0xFC) == 0xC8) parseUnexpandedEntityReference(r);
		else throw FISEncodingException("Invalid child element");
	}
	else if (code == 0xE1)
	{
		r.advance(8);
		parseProcessingInstruction(r);
	}
	else if (code == 0xE2)
	{
		r.advance(8);
		parseComment(r);
	}
	else throw FISEncodingException(BAD_CHILD);
	return true;
}


void FastInfosetParser::parseElement(BitStreamReader& r)
	/// Reads the start of an element and reports it; parseElementChildren()
	/// reads its children and its end.
{
	if (r.bitPos() != 1) throw FISEncodingException("Illegal startposition for an Element value");
	if (_openElements.size() >= _maxElementDepth) throw FISParseException("Maximum element depth exceeded");

	int available = 0;
	const UInt64 window = r.window(available);
	if (available < 7) throw FISParseException(END_OF_ELEMENT);
	const bool hasAttributes = (window >> 63) != 0;
	r.advance(1);
	const std::size_t firstDeclaration = _namespaceDeclarations.size();

	if (((window >> 57) & 0x3F) == 0x38)
	{
		unsigned char bits = 0;
		r.skip(6);
		if (!r.read(bits, 4)) throw FISParseException(END_OF_ELEMENT);
		while (bits != 15)
		{
			if (_namespaceDeclarations.size() - firstDeclaration >= _maxNamespaceDeclarations)
				throw FISParseException("Maximum number of namespace declarations exceeded");
			r.skip(2);
			parseNamespaceAttribute(r);
			if (!r.read(bits, 4)) throw FISParseException(END_OF_ELEMENT);
		}
		r.skip(6);
	}

	if (_namespaceDeclarations.size() > firstDeclaration)
	{
		const DeclarationScope scope = {_openElements.size(), firstDeclaration};
		_declarationScopes.push_back(scope);
	}

	const NameEntry& element = parseQualifiedNameOrIndex(r, true);

	_attributeCount = 0;
	if (hasAttributes) parseAttributes(r);
	startElement(element);
}


inline void FastInfosetParser::startElement(const NameEntry& element)
{
	if (element.excess) deliver(element.excess);
	if (_pContentHandler)
	{
		const Ixor::XML::AttributesImpl& attributes = attributeList();
		const std::string& qname = qualifiedName(element);
		_inHandler = true;
		_pContentHandler->startElement(*element.name.pUri, *element.name.pLocalName, qname, attributes);
		_inHandler = false;
		if (_trimAttributes) trimAttributeList();
	}
	_openElements.push_back(&element);
}


void FastInfosetParser::endElement(const NameEntry& element)
	/// The element's own declarations end after it, last declared first.
{
	if (_pContentHandler)
	{
		const std::string& qname = qualifiedName(element);
		_inHandler = true;
		_pContentHandler->endElement(*element.name.pUri, *element.name.pLocalName, qname);
		_inHandler = false;
	}
	if (!_declarationScopes.empty() && _declarationScopes.back().depth == _openElements.size())
	{
		const std::size_t first = _declarationScopes.back().first;
		_declarationScopes.pop_back();
		if (_pContentHandler)
		{
			_inHandler = true;
			for (std::size_t i = _namespaceDeclarations.size(); i > first; --i)
				_pContentHandler->endPrefixMapping(*_namespaceDeclarations[i - 1].pPrefix);
			_inHandler = false;
		}
		_namespaceDeclarations.resize(first);
	}
}


void FastInfosetParser::parseNamespaceAttribute(BitStreamReader& r)
{
	if (r.bitPos() != 6) throw FISEncodingException("Illegal startposition for a NamespaceAttribute value");
	bool prefixPresent = false;
	bool namespacePresent = false;
	bool ok = r.read(prefixPresent);
	ok = r.read(namespacePresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while parsing namespace attribute");

	NamespaceDeclaration declaration;
	declaration.pPrefix = parseCondIdentifyingStringOrIndex(r, prefixPresent, DocumentVocabulary::PREFIX);
	declaration.pURI = parseCondIdentifyingStringOrIndex(r, namespacePresent, DocumentVocabulary::NAMESPACE_NAME);
	_namespaceDeclarations.push_back(declaration);
	if (_pContentHandler)
	{
		_inHandler = true;
		_pContentHandler->startPrefixMapping(*declaration.pPrefix, *declaration.pURI);
		_inHandler = false;
	}
}


void FastInfosetParser::parseAttribute(BitStreamReader& r)
{
	if (r.bitPos() != 1) throw FISEncodingException("Illegal startposition for a Attribute value");
	parseAttributeValueOf(r, parseQualifiedNameOrIndex(r, false));
}


void FastInfosetParser::parseAttributeValueOf(BitStreamReader& r, const NameEntry& name)
{
	if (parseAttributeValue(r, name)) return;
	unsigned int algorithm = 0;
	const std::string* pValue = parseNonIdentifyingStringOrIndexXML(r, DocumentVocabulary::ATTRIBUTE_VALUE, algorithm);
	addAttribute(name, pValue->data(), pValue->size(), false);
}


bool FastInfosetParser::parseAttributeValue(BitStreamReader& r, const NameEntry& name)
	/// The common attribute values in one step: an index, or a UTF-8 literal.
	/// Returns false, having read nothing, for what the general path reads.
{
	int available = 0;
	const UInt64 window = r.window(available);
	unsigned int index = 0;
	int size = 0;
	if (window >> 63)
	{
		if (!FastDecoding::integerAt(1, window << 1, available - 1, index, size)) return false;
		r.advance(1 + size);
		addAttribute(name, deliveredAt(DocumentVocabulary::ATTRIBUTE_VALUE, index));
		return true;
	}
	// 0, the add-to-table bit, 00 for UTF-8, the length at the fifth bit.
	std::size_t length = 0;
	if (available < 4 || ((window >> 60) & 3) != DocumentVocabulary::UTF8) return false;
	if (!FastDecoding::stringLengthAt(4, window << 4, available - 4, length, size)) return false;
	const bool addToTable = ((window >> 62) & 1) != 0;
	r.advance(4 + size);
	const char* pData = 0;
	const bool view = r.readView(pData, length);
	if (!view)
	{
		r.read(_octets, length);
		pData = _octets.data();
	}
	if (addToTable)
	{
		// The value now lives in the table: the list refers to it there.
		_identifying.assign(pData, length);
		addAttribute(name, stringAt(DocumentVocabulary::ATTRIBUTE_VALUE, addString(DocumentVocabulary::ATTRIBUTE_VALUE, _identifying)));
	}
	// A view into a block in memory stays valid for the whole parse.
	else addAttribute(name, pData, length, view && _inputInMemory);
	return true;
}


const FastInfosetParser::NameEntry& FastInfosetParser::parseQualifiedNameOrIndex(BitStreamReader& r, bool element)
{
	const int pos = r.bitPos();
	if (pos != 1 && pos != 2) throw FISEncodingException("Illegal startposition for a parseQualifiedNameOrIndex value");
	int available = 0;
	const UInt64 window = r.window(available);
	if (available < 4) throw FISParseException("Unexpected end of stream while parsing qualified name or index");
	if ((window >> 60) != 15)
	{
		unsigned int index = 0;
		int size = 0;
		if (FastDecoding::integerAt(pos, window, available, index, size)) r.advance(size);
		else Decoder::integer(r, index);
		return nameAt(index, element);
	}

	r.skip(pos == 1 ? 5 : 4);
	bool prefixPresent = false;
	bool namespacePresent = false;
	bool ok = r.read(prefixPresent);
	ok = r.read(namespacePresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while parsing qualified name");
	unsigned int prefixIndex = 0;
	unsigned int namespaceIndex = 0;
	unsigned int localIndex = 0;
	ResolvedQualName name;
	name.pPrefix = prefixPresent ? parseIdentifyingStringOrIndex(r, DocumentVocabulary::PREFIX, prefixIndex) : &EMPTY_STRING;
	name.pUri = namespacePresent ? parseIdentifyingStringOrIndex(r, DocumentVocabulary::NAMESPACE_NAME, namespaceIndex) : &EMPTY_STRING;
	name.pLocalName = parseIdentifyingStringOrIndex(r, DocumentVocabulary::LOCAL_NAME, localIndex);
	return addName(QualifiedNameEntry(prefixIndex, namespaceIndex, localIndex), name, element);
}


//
// Strings
//
const std::string* FastInfosetParser::parseIdentifyingStringOrIndex(BitStreamReader& r, DocumentVocabulary::ID id, unsigned int& index)
{
	if (r.bitPos() != 0) throw FISEncodingException("Illegal startposition for an parseIdentifyingStringOrIndex");
	bool isIndex = false;
	if (!r.read(isIndex)) throw FISParseException("Unexpected end of stream while parsing identifying string or index");
	if (isIndex)
	{
		Decoder::integer(r, index);
		return &deliveredAt(id, index);
	}
	Decoder::nonEmptyOctetString(r, _identifying);
	index = addString(id, _identifying);
	return &stringAt(id, index);
}


const std::string* FastInfosetParser::parseIdentifyingStringOrIndex(BitStreamReader& r, DocumentVocabulary::ID id)
{
	unsigned int index = 0;
	return parseIdentifyingStringOrIndex(r, id, index);
}


const std::string* FastInfosetParser::parseCondIdentifyingStringOrIndex(BitStreamReader& r, bool present, DocumentVocabulary::ID id)
{
	return present ? parseIdentifyingStringOrIndex(r, id) : &EMPTY_STRING;
}


const std::string* FastInfosetParser::parseNonIdentifyingStringOrIndexXML(BitStreamReader& r, DocumentVocabulary::ID id, unsigned int& algorithm)
{
	const int pos = r.bitPos();
	if (pos != 0 && pos != 2) throw FISEncodingException(BAD_STRING_POSITION);
	bool isIndex = false;
	if (!r.read(isIndex)) throw FISParseException("Unexpected end of stream while parsing non identifying string or index");
	if (isIndex)
	{
		unsigned int index = 0;
		Decoder::integer(r, index);
		return &deliveredAt(id, index);
	}
	bool addToTable = false;
	if (!r.read(addToTable)) throw FISParseException("Unexpected end of stream while parsing encoded character string");
	const std::string* pText = parseEncodedCharacterStringXML(r, algorithm);
	if (addToTable) addString(id, *pText);
	return pText;
}


Encoding* FastInfosetParser::parseNonIdentifyingStringOrIndex(BitStreamReader& r, DocumentVocabulary::ID id)
{
	const int pos = r.bitPos();
	if (pos != 0 && pos != 2) throw FISEncodingException(BAD_STRING_POSITION);
	// This reader's end-of-stream messages are spelled "whil"; the text
	// reader's are spelled out. Both spellings are kept.
	bool isIndex = false;
	if (!r.read(isIndex)) throw FISParseException("Unexpected end of stream whil parsing non identifying string or index");
	if (isIndex)
	{
		unsigned int index = 0;
		Decoder::integer(r, index);
		_pIndexedValue->reset(deliveredAt(id, index));
		return _pIndexedValue;
	}
	bool addToTable = false;
	if (!r.read(addToTable)) throw FISParseException("Unexpected end of stream whil parsing encoded character string");
	Encoding* pValue = parseEncodedCharacterString(r);
	if (addToTable) addString(id, pValue->content());
	return pValue;
}


const std::string* FastInfosetParser::parseEncodedCharacterStringXML(BitStreamReader& r, unsigned int& algorithm)
{
	const int pos = r.bitPos();
	if (pos != 2 && pos != 4) throw FISEncodingException(BAD_ENCODED_POSITION);
	_octets.clear();
	_text.clear();
	algorithm = 0;
	unsigned char enc = 0;
	if (!r.read(enc, 2)) throw FISParseException("Unexpected end of stream while parsing encoded character string");
	switch (enc)
	{
	case DocumentVocabulary::UTF8:
		Decoder::nonEmptyOctetString(r, _octets);
		return &_octets;
	case DocumentVocabulary::UTF16:
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeUTF16(_octets, _text);
		return &_text;
	case DocumentVocabulary::RESTRICTEDALPHABET:
	{
		unsigned int index = 0;
		Decoder::integer(r, index);
		const RestrictedAlphabet& alphabet = FastDecoding::alphabetAt(_vocabulary.restrictedAlphabets(), index);
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeAlphabet(_octets, alphabet, _text);
		return &_text;
	}
	default:
	{
		poco_assert(enc == DocumentVocabulary::ENCODINGALGORITHM);
		unsigned int index = 0;
		Decoder::integer(r, index);
		_pTypedValue = _vocabulary.decodings().read(static_cast<int>(index), r);
		algorithm = _pTypedValue->type();
		return &_pTypedValue->content();
	}
	}
}


Encoding* FastInfosetParser::parseEncodedCharacterString(BitStreamReader& r)
{
	const int pos = r.bitPos();
	if (pos != 2 && pos != 4) throw FISEncodingException(BAD_ENCODED_POSITION);
	_octets.clear();
	_text.clear();
	unsigned char enc = 0;
	if (!r.read(enc, 2)) throw FISParseException("Unexpected end of stream whil parsing encoded character string");
	switch (enc)
	{
	case DocumentVocabulary::UTF8:
		Decoder::nonEmptyOctetString(r, _pLiteralValue->content());
		return _pLiteralValue;
	case DocumentVocabulary::UTF16:
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeUTF16(_octets, _pLiteralValue->content());
		return _pLiteralValue;
	case DocumentVocabulary::RESTRICTEDALPHABET:
	{
		unsigned int index = 0;
		Decoder::integer(r, index);
		const RestrictedAlphabet& alphabet = FastDecoding::alphabetAt(_vocabulary.restrictedAlphabets(), index);
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeAlphabet(_octets, alphabet, _pLiteralValue->content());
		return _pLiteralValue;
	}
	default:
	{
		poco_assert(enc == DocumentVocabulary::ENCODINGALGORITHM);
		unsigned int index = 0;
		Decoder::integer(r, index);
		_pTypedValue = _vocabulary.decodings().read(static_cast<int>(index), r);
		return _pTypedValue;
	}
	}
}


//
// Leaf items
//
bool FastInfosetParser::parseCharacterChunkFast(BitStreamReader& r, UInt64 window, int available)
	/// The common chunks, from the window that begins after the chunk's two
	/// bits: an index, or a UTF-8 literal, reported as they stand in the
	/// vocabulary or in the input. Returns false, having read nothing, for
	/// the rest.
{
	unsigned int index = 0;
	int size = 0;
	if (window >> 63)
	{
		if (!FastDecoding::integerAt(3, window << 1, available - 1, index, size)) return false;
		r.advance(1 + size);
		const std::string& text = deliveredAt(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, index);
		characters(text.data(), text.size());
		return true;
	}
	std::size_t length = 0;
	if (available < 4 || ((window >> 60) & 3) != DocumentVocabulary::UTF8) return false;
	if (!FastDecoding::stringLengthAt(6, window << 4, available - 4, length, size)) return false;
	r.advance(4 + size);
	const char* pData = 0;
	if (!r.readView(pData, length))
	{
		r.read(_octets, length);
		pData = _octets.data();
	}
	if ((window >> 62) & 1)
	{
		_identifying.assign(pData, length);
		addString(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, _identifying);
	}
	characters(pData, length);
	return true;
}


void FastInfosetParser::parseCharacterChunk(BitStreamReader& r)
{
	if (r.bitPos() != 2) throw FISEncodingException("Illegal startposition for a CharacterChunk value");
	int available = 0;
	const UInt64 window = r.window(available);
	if (parseCharacterChunkFast(r, window, available)) return;

	Encoding* pValue = parseNonIdentifyingStringOrIndex(r, DocumentVocabulary::CONTENT_CHARACTER_CHUNK);
	const bool cdata = pValue->type() == CDATA_ALGORITHM;
	_inHandler = true;
	if (_pLexicalHandler && cdata) _pLexicalHandler->startCDATA();
	if (_pFISContentHandler) pValue->handle(_pFISContentHandler);
	else if (_pContentHandler) pValue->handle(_pContentHandler);
	if (_pLexicalHandler && cdata) _pLexicalHandler->endCDATA();
	_inHandler = false;
}


inline void FastInfosetParser::characters(const char* data, std::size_t length)
	/// Plain text goes to characters() for every kind of content handler.
{
	if (!_pContentHandler) return;
	_inHandler = true;
	// A call takes at most INT_MAX octets.
	while (length > static_cast<std::size_t>(INT_MAX))
	{
		_pContentHandler->characters(data, 0, INT_MAX);
		data += INT_MAX;
		length -= INT_MAX;
	}
	_pContentHandler->characters(data, 0, static_cast<int>(length));
	_inHandler = false;
}


void FastInfosetParser::parseComment(BitStreamReader& r)
{
	if (r.bitPos() != 0) throw FISEncodingException("Illegal startposition for a Comment value");
	unsigned int algorithm = 0;
	const std::string* pText = parseNonIdentifyingStringOrIndexXML(r, DocumentVocabulary::OTHER_STRING, algorithm);
	if (_pLexicalHandler)
	{
		_inHandler = true;
		_pLexicalHandler->comment(pText->data(), 0, static_cast<int>(pText->size()));
		_inHandler = false;
	}
}


void FastInfosetParser::parseProcessingInstruction(BitStreamReader& r)
{
	const std::string* pTarget = parseIdentifyingStringOrIndex(r, DocumentVocabulary::OTHER_NCNAME);
	unsigned int algorithm = 0;
	const std::string* pData = parseNonIdentifyingStringOrIndexXML(r, DocumentVocabulary::OTHER_STRING, algorithm);
	if (_pContentHandler)
	{
		_inHandler = true;
		_pContentHandler->processingInstruction(*pTarget, *pData);
		_inHandler = false;
	}
}


void FastInfosetParser::parseDocumentTypeDeclaration(BitStreamReader& r)
{
	if (r.bitPos() != 6) throw FISEncodingException("Illegal startposition for a DocumentTypeDeclaration value");
	bool systemPresent = false;
	bool publicPresent = false;
	bool ok = r.read(systemPresent);
	ok = r.read(publicPresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	const std::string* pSystemId = parseCondIdentifyingStringOrIndex(r, systemPresent, DocumentVocabulary::OTHER_URI);
	const std::string* pPublicId = parseCondIdentifyingStringOrIndex(r, publicPresent, DocumentVocabulary::OTHER_URI);
	// The root element's name is not part of the item: it is reported empty.
	if (_pLexicalHandler)
	{
		_inHandler = true;
		_pLexicalHandler->startDTD(EMPTY_STRING, *pPublicId, *pSystemId);
		_inHandler = false;
	}

	unsigned char stat = 0;
	if (!r.read(stat, 4)) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	while (stat == 14)
	{
		r.skip(4);
		parseProcessingInstruction(r);
		if (!r.read(stat, 4)) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	}
	if (stat != 15) throw FISEncodingException("Invalid terminator of document type declaration");
	if (_pLexicalHandler)
	{
		_inHandler = true;
		_pLexicalHandler->endDTD();
		_inHandler = false;
	}
}


void FastInfosetParser::parseUnexpandedEntityReference(BitStreamReader& r)
{
	// The notation's message is the one used here.
	if (r.bitPos() != 6) throw FISEncodingException(BAD_NOTATION_POSITION);
	bool systemPresent = false;
	bool publicPresent = false;
	bool ok = r.read(systemPresent);
	ok = r.read(publicPresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while parsing unexpanded entity reference");
	parseIdentifyingStringOrIndex(r, DocumentVocabulary::OTHER_NCNAME);
	parseCondIdentifyingStringOrIndex(r, systemPresent, DocumentVocabulary::OTHER_URI);
	parseCondIdentifyingStringOrIndex(r, publicPresent, DocumentVocabulary::OTHER_URI);
}


void FastInfosetParser::parseNotation(BitStreamReader& r)
{
	if (r.bitPos() != 6) throw FISEncodingException(BAD_NOTATION_POSITION);
	bool systemPresent = false;
	bool publicPresent = false;
	bool ok = r.read(systemPresent);
	ok = r.read(publicPresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while parsing notation");
	const std::string* pName = parseIdentifyingStringOrIndex(r, DocumentVocabulary::OTHER_NCNAME);
	const std::string* pSystemId = systemPresent ? parseIdentifyingStringOrIndex(r, DocumentVocabulary::OTHER_URI) : 0;
	const std::string* pPublicId = publicPresent ? parseIdentifyingStringOrIndex(r, DocumentVocabulary::OTHER_URI) : 0;
	if (_pDTDHandler)
	{
		_inHandler = true;
		_pDTDHandler->notationDecl(*pName, pPublicId, pSystemId);
		_inHandler = false;
	}
}


void FastInfosetParser::parseUnparsedEntity(BitStreamReader& r)
{
	if (r.bitPos() != 7) throw FISEncodingException("Illegal startposition for an UnparsedEntity value");
	bool publicPresent = false;
	if (!r.read(publicPresent)) throw FISParseException("Unexpected end of stream while parsing unparsed entity");
	const std::string* pName = parseIdentifyingStringOrIndex(r, DocumentVocabulary::OTHER_NCNAME);
	const std::string* pSystemId = parseIdentifyingStringOrIndex(r, DocumentVocabulary::OTHER_URI);
	const std::string* pPublicId = parseCondIdentifyingStringOrIndex(r, publicPresent, DocumentVocabulary::OTHER_URI);
	const std::string* pNotationName = parseIdentifyingStringOrIndex(r, DocumentVocabulary::OTHER_NCNAME);
	if (_pDTDHandler)
	{
		_inHandler = true;
		_pDTDHandler->unparsedEntityDecl(*pName, pPublicId->empty() ? 0 : pPublicId, *pSystemId, *pNotationName);
		_inHandler = false;
	}
}


//
// Attributes
//
inline FastInfosetParser::Attribute& FastInfosetParser::nextAttribute(const NameEntry& name)
{
	if (name.excess) deliver(name.excess);
	if (_attributeCount == _attributes.size()) _attributes.emplace_back();
	Attribute& attribute = _attributes[_attributeCount++];
	attribute.pName = &name;
	return attribute;
}


inline void FastInfosetParser::addAttribute(const NameEntry& name, const std::string& value)
	/// value is a vocabulary entry.
{
	Attribute& attribute = nextAttribute(name);
	attribute.pValue = &value;
	attribute.pData = value.data();
	attribute.length = value.size();
}


inline void FastInfosetParser::addAttribute(const NameEntry& name, const char* value, std::size_t length, bool inInput)
	/// A value in the input is referred to; any other is copied (the slot
	/// keeps its capacity from element to element).
{
	Attribute& attribute = nextAttribute(name);
	attribute.pValue = nullptr;
	attribute.length = length;
	if (inInput)
	{
		attribute.pData = value;
		return;
	}
	attribute.copy.assign(value, length);
	attribute.pData = nullptr;
	if (length > RETAINED_ATTRIBUTE_OCTETS) _trimAttributes = true;
}


const Ixor::XML::AttributesImpl& FastInfosetParser::attributeList()
	/// The list for the number of attributes read, filled from them. A slot
	/// that holds the same name, or the same vocabulary value, as for the
	/// element before is left as it is.
{
	const std::size_t count = _attributeCount;
	if (count >= POOLED_ATTRIBUTE_COUNTS)
	{
		// Large elements are rare: their list is built for each and released
		// after it.
		_largeAttributes.clear();
		_largeAttributes.reserve(count);
		for (std::size_t i = 0; i < count; ++i)
		{
			const Attribute& attribute = _attributes[i];
			const NameEntry& name = *attribute.pName;
			_largeAttributes.addAttribute(*name.name.pUri, *name.name.pLocalName, qualifiedName(name), CDATA_TYPE,
				attribute.pData ? std::string(attribute.pData, attribute.length) : attribute.copy, true);
		}
		_trimAttributes = true;
		return _largeAttributes;
	}
	// Lists are kept by the number of their attributes and, among those, by
	// the sequence of their names, so that elements of one kind mostly find
	// their names in place and only their values change.
	std::size_t hash = 0;
	for (std::size_t i = 0; i < count; ++i)
	{
		hash = hash * 31 + (reinterpret_cast<std::uintptr_t>(_attributes[i].pName) >> 4);
	}
	std::unique_ptr<AttributeList>& pList = _attributeLists[count * ATTRIBUTE_LISTS_PER_COUNT + hash % ATTRIBUTE_LISTS_PER_COUNT];
	if (!pList)
	{
		// The entries are reserved first, so that the pointers to them stay
		// valid.
		pList.reset(new AttributeList);
		pList->list.reserve(count);
		pList->slots.resize(count);
		for (std::size_t i = 0; i < count; ++i)
		{
			Ixor::XML::AttributesImpl::Attribute& slot = pList->list.addAttribute();
			slot.type = CDATA_TYPE;
			slot.specified = true;
			pList->slots[i].pSlot = &slot;
		}
	}
	AttributeList& list = *pList;
	for (std::size_t i = 0; i < count; ++i) fillSlot(list, i, _attributes[i]);
	return list.list;
}


inline void FastInfosetParser::fillSlot(AttributeList& list, std::size_t i, Attribute& attribute)
{
	AttributeList::Slot& held = list.slots[i];
	Ixor::XML::AttributesImpl::Attribute& slot = *held.pSlot;
	const NameEntry& name = *attribute.pName;
	if (held.pName != &name)
	{
		// Most attributes have no namespace: the one held may be it already.
		if (!held.pName || held.pName->name.pUri != name.name.pUri) slot.namespaceURI = *name.name.pUri;
		slot.localName = *name.name.pLocalName;
		slot.qname = qualifiedName(name);
		held.pName = &name;
		if (name.excess) _trimAttributes = true;
	}
	// A value from a table that the slot holds already is left as it is.
	if (attribute.pValue && held.pValue == attribute.pValue) return;
	held.pValue = attribute.pValue;
	if (attribute.pValue) slot.value = *attribute.pValue;
	else if (attribute.pData) slot.value.assign(attribute.pData, attribute.length);
	else slot.value = attribute.copy;
	if (attribute.length > RETAINED_ATTRIBUTE_OCTETS) _trimAttributes = true;
}


void FastInfosetParser::trimAttributeList()
	/// Releases the long strings of the lists and of the attributes read,
	/// so that they hold little between elements.
{
	const auto release = [](std::string& text)
	{
		if (text.capacity() > RETAINED_ATTRIBUTE_OCTETS) std::string().swap(text);
	};
	for (std::unique_ptr<AttributeList>& pList: _attributeLists)
	{
		if (!pList) continue;
		for (AttributeList::Slot& held: pList->slots)
		{
			Ixor::XML::AttributesImpl::Attribute& slot = *held.pSlot;
			release(slot.namespaceURI);
			release(slot.localName);
			release(slot.qname);
			release(slot.value);
			held.pName = nullptr;
			held.pValue = nullptr;
		}
	}
	for (Attribute& attribute: _attributes) release(attribute.copy);
	if (_largeAttributes.getLength() > 0) _largeAttributes = Ixor::XML::AttributesImpl();
	_trimAttributes = false;
}


} } // namespace Ixor::FastInfoset
