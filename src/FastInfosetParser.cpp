#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/FISDocumentHandler.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/VerbTable.h"
#include "Poco/SAX/AttributesImpl.h"
#include "Poco/SAX/ContentHandler.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/EntityResolverImpl.h"
#include "Poco/SAX/ErrorHandler.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/SAX/SAXException.h"
#include "Poco/XML/XMLWriter.h"
#include "ItemReader.h"
#include "VocabularyFileLoader.h"
#include <climits>
#include <cstring>
#include <cstdint>
#include <vector>


using Ixor::XML::XMLString;
using Ixor::XML::XMLReader;


namespace Ixor {
namespace FastInfoset {


namespace
{
	const unsigned int CDATA_ALGORITHM = 10;
	const std::string CDATA_TYPE("CDATA");

	// Elements with fewer attributes than this are reported in lists that
	// are kept, so that their strings keep their capacity: so many lists
	// for each number of attributes.
	const std::size_t POOLED_ATTRIBUTE_COUNTS = 32;
	const std::size_t ATTRIBUTE_LISTS_PER_COUNT = 16;
	// Strings of the lists longer than this are released after the element
	// is reported, so that what the lists hold stays small.
	const std::size_t RETAINED_ATTRIBUTE_OCTETS = 256;


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
}


class FastInfosetParser::Dispatch: public HeaderListener
	/// The SAX side of a parse: hands the items of the reader to the
	/// parser's handlers as the host's SAXParser would report them, and
	/// answers the header's questions with the parser's settings. Handlers
	/// are looked up at each item, so that a handler set during a parse
	/// takes over at once.
{
public:
	static constexpr bool DETAILED = false;

	Dispatch(FastInfosetParser& parser, ItemReader& items);

	void begin();
	bool inHandler() const;
	void fatalError(const std::string& message);
	void xmlDeclaration(const std::string& text);
	void vocabularyRead(const DocumentVocabulary& vocabulary);
	void notation(const std::string& name, const std::string* pPublicId, const std::string* pSystemId);
	void unparsedEntity(const std::string& name, const std::string* pPublicId, const std::string& systemId, const std::string& notationName);
	void startDocument();
	void startPrefixMapping(const std::string& prefix, const std::string& uri);
	void startElement(const ItemReader::NameEntry& element);
	void endElement(const ItemReader::NameEntry& element);
	void endPrefixMapping(const std::string& prefix);
	void characters(const char* pData, std::size_t length);
	void value(Encoding& value);
	void comment(const std::string& text);
	void processingInstruction(const std::string& target, const std::string& data);
	void startDTD(const std::string& publicId, const std::string& systemId);
	void endDTD();
	void endDocument();

	// HeaderListener
	bool loadExternalVocabulary(const std::string& uri, DocumentVocabulary& vocabulary) override;

private:
	struct AttributeList
		/// A list handed to startElement(), kept for the elements whose
		/// attributes have the same names. Its entries never move once
		/// built, so their strings keep their capacity from element to
		/// element.
	{
		struct Slot
		{
			Ixor::XML::AttributesImpl::Attribute* pSlot;
			const ItemReader::NameEntry* pName = nullptr;   // the name the entry holds
			const std::string* pValue = nullptr;            // the table value it holds, if any
		};

		Ixor::XML::AttributesImpl list;
		std::vector<Slot> slots;
	};

	const std::string& qualifiedName(const ItemReader::NameEntry& name);
	const Ixor::XML::AttributesImpl& attributeList(const ItemReader::NameEntry& element);
	void fillSlot(AttributeList& list, std::size_t i, const ItemReader::Attribute& attribute);
	void trimAttributeLists();

	FastInfosetParser& _parser;
	ItemReader&        _items;
	bool               _inHandler;

	// The lists that report attributes, kept by the names they hold;
	// elements with many attributes share one that is built for each.
	std::vector<std::unique_ptr<AttributeList>> _attributeLists;
	std::vector<AttributeList*> _builtLists;   // those of _attributeLists that were built
	Ixor::XML::AttributesImpl _largeAttributes;
	bool               _trimAttributes;
};


const std::string FastInfosetParser::EMPTY_STRING;
const std::size_t FastInfosetParser::DEFAULT_MAX_ELEMENT_DEPTH;
const std::size_t FastInfosetParser::DEFAULT_MAX_NAMESPACE_DECLARATIONS;
const Ixor::UInt64 FastInfosetParser::DEFAULT_MAX_EXTERNAL_VOCABULARY_SIZE;
const Ixor::UInt64 FastInfosetParser::DEFAULT_AMPLIFICATION_THRESHOLD;
constexpr double FastInfosetParser::DEFAULT_MAX_AMPLIFICATION;


FastInfosetParser::FastInfosetParser(DocumentVocabulary::VocabularyImpl impl):
	_pItems(new ItemReader(impl))
{
	init();
}


FastInfosetParser::FastInfosetParser(const DocumentVocabulary& vocabulary):
	_pGivenVocabulary(new DocumentVocabulary(VocabularyFileLoader::forReading(vocabulary)))
{
	// Documents add to the given entries as to any vocabulary of the
	// reader's own, whatever kind of tables it was given with.
	_pItems.reset(new ItemReader(*_pGivenVocabulary));
	init();
}


void FastInfosetParser::init()
{
	_pEntityResolver = 0;
	_pDTDHandler = 0;
	_pContentHandler = 0;
	_pErrorHandler = 0;
	_pDeclHandler = 0;
	_pLexicalHandler = 0;
	_pDocumentHandler = 0;
	_pFISContentHandler = 0;
	_namespacePrefixes = true;
	_pDispatch.reset(new Dispatch(*this, *_pItems));
	_maxElementDepth = DEFAULT_MAX_ELEMENT_DEPTH;
	_maxNamespaceDeclarations = DEFAULT_MAX_NAMESPACE_DECLARATIONS;
	_loadExternalVocabularies = false;
	_maxExternalVocabularySize = DEFAULT_MAX_EXTERNAL_VOCABULARY_SIZE;
	_vocabularyNesting = 0;
	_amplificationThreshold = DEFAULT_AMPLIFICATION_THRESHOLD;
	_maxAmplification = DEFAULT_MAX_AMPLIFICATION;
	_lastDocumentSize = 0;
	_pPendingStream = 0;
	_inputInMemory = false;
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
	return _pItems->vocabulary();
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
{
	const ItemReader::Limits limits = {_maxElementDepth, _maxNamespaceDeclarations, _amplificationThreshold, _maxAmplification};
	_pItems->setLimits(limits);
	_pDispatch->begin();
	_pItems->read(r, _inputInMemory, *_pDispatch, *_pDispatch);
}


//
// Dispatch
//
FastInfosetParser::Dispatch::Dispatch(FastInfosetParser& parser, ItemReader& items):
	_parser(parser),
	_items(items),
	_inHandler(false),
	_attributeLists(POOLED_ATTRIBUTE_COUNTS * ATTRIBUTE_LISTS_PER_COUNT),
	_trimAttributes(false)
{
}


void FastInfosetParser::Dispatch::begin()
{
	_inHandler = false;
}


inline bool FastInfosetParser::Dispatch::inHandler() const
{
	return _inHandler;
}


void FastInfosetParser::Dispatch::fatalError(const std::string& message)
{
	if (_parser._pErrorHandler) _parser._pErrorHandler->fatalError(FaultReport(message));
}


inline void FastInfosetParser::Dispatch::xmlDeclaration(const std::string& text)
{
	if (!_parser._pDocumentHandler) return;
	_inHandler = true;
	_parser._pDocumentHandler->setWriteXMLDeclaration(!text.empty());
	_inHandler = false;
}


inline void FastInfosetParser::Dispatch::vocabularyRead(const DocumentVocabulary& vocabulary)
{
	// The names the lists hold belong to the previous document.
	for (AttributeList* pList: _builtLists)
	{
		for (AttributeList::Slot& held: pList->slots)
		{
			held.pName = nullptr;
			held.pValue = nullptr;
		}
	}
	if (!_parser._pDocumentHandler) return;
	_inHandler = true;
	_parser._pDocumentHandler->setDocumentVocabulary(vocabulary);
	_inHandler = false;
}


inline void FastInfosetParser::Dispatch::notation(const std::string& name, const std::string* pPublicId, const std::string* pSystemId)
{
	if (!_parser._pDTDHandler) return;
	_inHandler = true;
	_parser._pDTDHandler->notationDecl(name, pPublicId, pSystemId);
	_inHandler = false;
}


inline void FastInfosetParser::Dispatch::unparsedEntity(const std::string& name, const std::string* pPublicId, const std::string& systemId, const std::string& notationName)
{
	if (!_parser._pDTDHandler) return;
	_inHandler = true;
	_parser._pDTDHandler->unparsedEntityDecl(name, pPublicId, systemId, notationName);
	_inHandler = false;
}


inline void FastInfosetParser::Dispatch::startDocument()
{
	if (!_parser._pContentHandler) return;
	_inHandler = true;
	_parser._pContentHandler->startDocument();
	_inHandler = false;
}


inline void FastInfosetParser::Dispatch::endDocument()
{
	_parser._lastDocumentSize = _items.documentSize();
	if (!_parser._pContentHandler) return;
	_inHandler = true;
	_parser._pContentHandler->endDocument();
	_inHandler = false;
}


inline void FastInfosetParser::Dispatch::startPrefixMapping(const std::string& prefix, const std::string& uri)
{
	if (!_parser._pContentHandler) return;
	_inHandler = true;
	_parser._pContentHandler->startPrefixMapping(prefix, uri);
	_inHandler = false;
}


inline void FastInfosetParser::Dispatch::endPrefixMapping(const std::string& prefix)
{
	if (!_parser._pContentHandler) return;
	_inHandler = true;
	_parser._pContentHandler->endPrefixMapping(prefix);
	_inHandler = false;
}


inline const std::string& FastInfosetParser::Dispatch::qualifiedName(const ItemReader::NameEntry& name)
{
	if (!_parser._namespacePrefixes) return EMPTY_STRING;
	return _items.qualifiedName(name);
}


inline void FastInfosetParser::Dispatch::startElement(const ItemReader::NameEntry& element)
{
	Ixor::XML::ContentHandler* pHandler = _parser._pContentHandler;
	if (!pHandler) return;
	const Ixor::XML::AttributesImpl& attributes = attributeList(element);
	const std::string& qname = qualifiedName(element);
	_inHandler = true;
	pHandler->startElement(*element.name.pUri, *element.name.pLocalName, qname, attributes);
	_inHandler = false;
	if (_trimAttributes) trimAttributeLists();
}


inline void FastInfosetParser::Dispatch::endElement(const ItemReader::NameEntry& element)
{
	Ixor::XML::ContentHandler* pHandler = _parser._pContentHandler;
	if (!pHandler) return;
	const std::string& qname = qualifiedName(element);
	_inHandler = true;
	pHandler->endElement(*element.name.pUri, *element.name.pLocalName, qname);
	_inHandler = false;
}


inline void FastInfosetParser::Dispatch::characters(const char* pData, std::size_t length)
	/// Plain text goes to characters() for every kind of content handler.
{
	Ixor::XML::ContentHandler* pHandler = _parser._pContentHandler;
	if (!pHandler) return;
	_inHandler = true;
	// A call takes at most INT_MAX octets.
	while (length > static_cast<std::size_t>(INT_MAX))
	{
		pHandler->characters(pData, 0, INT_MAX);
		pData += INT_MAX;
		length -= INT_MAX;
	}
	pHandler->characters(pData, 0, static_cast<int>(length));
	_inHandler = false;
}


void FastInfosetParser::Dispatch::value(Encoding& value)
	/// A value of the CDATA algorithm is a CDATA section; values of the
	/// other algorithms reach a FISContentHandler typed.
{
	const bool cdata = value.type() == CDATA_ALGORITHM;
	Ixor::XML::LexicalHandler* pLexicalHandler = _parser._pLexicalHandler;
	_inHandler = true;
	if (pLexicalHandler && cdata) pLexicalHandler->startCDATA();
	if (_parser._pFISContentHandler) value.handle(_parser._pFISContentHandler);
	else if (_parser._pContentHandler) value.handle(_parser._pContentHandler);
	if (pLexicalHandler && cdata) pLexicalHandler->endCDATA();
	_inHandler = false;
}


void FastInfosetParser::Dispatch::comment(const std::string& text)
{
	if (!_parser._pLexicalHandler) return;
	_inHandler = true;
	_parser._pLexicalHandler->comment(text.data(), 0, static_cast<int>(text.size()));
	_inHandler = false;
}


void FastInfosetParser::Dispatch::processingInstruction(const std::string& target, const std::string& data)
{
	if (!_parser._pContentHandler) return;
	_inHandler = true;
	_parser._pContentHandler->processingInstruction(target, data);
	_inHandler = false;
}


void FastInfosetParser::Dispatch::startDTD(const std::string& publicId, const std::string& systemId)
{
	if (!_parser._pLexicalHandler) return;
	_inHandler = true;
	_parser._pLexicalHandler->startDTD(EMPTY_STRING, publicId, systemId);
	_inHandler = false;
}


void FastInfosetParser::Dispatch::endDTD()
{
	if (!_parser._pLexicalHandler) return;
	_inHandler = true;
	_parser._pLexicalHandler->endDTD();
	_inHandler = false;
}


bool FastInfosetParser::Dispatch::loadExternalVocabulary(const std::string& uri, DocumentVocabulary& vocabulary)
	/// A handler without which the document can still be read learns of
	/// what was loaded, not of a vocabulary given in advance.
{
	const DocumentVocabulary* pGiven = _parser._pGivenVocabulary.get();
	if (pGiven && uri == pGiven->getURI() && &vocabulary == &_items.vocabulary())
	{
		_items.restore(*pGiven);
		return false;
	}
	VocabularyFileLoader loader(_parser);
	const bool loaded = loader.load(uri, vocabulary);
	if (loaded && _parser._pDocumentHandler)
	{
		_inHandler = true;
		_parser._pDocumentHandler->setExternalVocabulary(uri, vocabulary);
		_inHandler = false;
	}
	return loaded;
}


const Ixor::XML::AttributesImpl& FastInfosetParser::Dispatch::attributeList(const ItemReader::NameEntry& element)
	/// The list for the number of attributes read, filled from them. A slot
	/// that holds the same name, or the same vocabulary value, as for the
	/// element before is left as it is.
{
	const ItemReader::Attribute* pAttributes = _items.attributes();
	const std::size_t count = _items.attributeCount();
	if (count >= POOLED_ATTRIBUTE_COUNTS)
	{
		// Large elements are rare: their list is built for each and released
		// after it.
		_largeAttributes.clear();
		_largeAttributes.reserve(count);
		for (std::size_t i = 0; i < count; ++i)
		{
			const ItemReader::Attribute& attribute = pAttributes[i];
			const ItemReader::NameEntry& name = *attribute.pName;
			_largeAttributes.addAttribute(*name.name.pUri, *name.name.pLocalName, qualifiedName(name), CDATA_TYPE,
				attribute.pData ? std::string(attribute.pData, attribute.length) : attribute.copy, true);
		}
		_trimAttributes = true;
		return _largeAttributes;
	}
	// Lists are kept by the number of their attributes and, among those, by
	// the element's name, so that elements of one kind mostly find the names
	// of their attributes in place and only their values change.
	const std::size_t hash = reinterpret_cast<std::uintptr_t>(&element) / sizeof(ItemReader::NameEntry);
	std::unique_ptr<AttributeList>& pList = _attributeLists[count * ATTRIBUTE_LISTS_PER_COUNT + hash % ATTRIBUTE_LISTS_PER_COUNT];
	if (!pList)
	{
		// The entries are reserved first, so that the pointers to them stay
		// valid.
		pList.reset(new AttributeList);
		_builtLists.push_back(pList.get());
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
	for (std::size_t i = 0; i < count; ++i) fillSlot(list, i, pAttributes[i]);
	return list.list;
}


inline void FastInfosetParser::Dispatch::fillSlot(AttributeList& list, std::size_t i, const ItemReader::Attribute& attribute)
{
	AttributeList::Slot& held = list.slots[i];
	Ixor::XML::AttributesImpl::Attribute& slot = *held.pSlot;
	const ItemReader::NameEntry& name = *attribute.pName;
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
	if (attribute.pData) VerbTableDetail::assignText(slot.value, attribute.pData, attribute.length);
	else slot.value = attribute.copy;
	if (attribute.length > RETAINED_ATTRIBUTE_OCTETS) _trimAttributes = true;
}


void FastInfosetParser::Dispatch::trimAttributeLists()
	/// Releases the long strings of the lists, so that they hold little
	/// between elements.
{
	const auto release = [](std::string& text)
	{
		if (text.capacity() > RETAINED_ATTRIBUTE_OCTETS) std::string().swap(text);
	};
	for (AttributeList* pList: _builtLists)
	{
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
	if (_largeAttributes.getLength() > 0) _largeAttributes = Ixor::XML::AttributesImpl();
	_trimAttributes = false;
}


} } // namespace Ixor::FastInfoset
