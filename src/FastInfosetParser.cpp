#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/FISDocumentHandler.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/NullEncoding.h"
#include "Ixor/FastInfoset/NullRefEncoding.h"
#include "Ixor/FastInfoset/StringDecoder.h"
#include "Poco/SAX/ContentHandler.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/EntityResolverImpl.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/LexicalHandler.h"
#include "Poco/SAX/SAXException.h"
#include "Poco/XML/XMLWriter.h"
#include "FastDecoding.h"


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
	const unsigned int ABSENT = 0xFFFFFFFF;
}


const std::string FastInfosetParser::EMPTY_STRING;


FastInfosetParser::ResolvedQualName::ResolvedQualName():
	pPrefix(0),
	pUri(0),
	pLocalName(0)
{
}


FastInfosetParser::NameEntry::NameEntry():
	resolved(false)
{
}


FastInfosetParser::FastInfosetParser(DocumentVocabulary::VocabularyImpl impl):
	_vocabulary(impl)
{
	init();
}


FastInfosetParser::FastInfosetParser(const DocumentVocabulary& vocabulary):
	_vocabulary(vocabulary)
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
	_loadExternalVocabularies = true;
	_namespaceDeclarations.reserve(16);
	_xmlDeclaration.reserve(SCRATCH_SIZE);
	_identifying.reserve(SCRATCH_SIZE);
	_octets.reserve(SCRATCH_SIZE);
	_text.reserve(SCRATCH_SIZE);
	_qname.reserve(256);
	_pQName = &_qname;
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
	if (pSource->getByteStream())
	{
		BitStreamReader reader(*pSource->getByteStream());
		parseDocument(reader);
	}
	else if (pSource->getCharacterStream())
	{
		BitStreamReader reader(*pSource->getCharacterStream());
		parseDocument(reader);
	}
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
	BitStreamReader reader(data, size);
	parseDocument(reader);
}


//
// Vocabulary views
//
inline const std::string& FastInfosetParser::stringAt(DocumentVocabulary::ID id, unsigned int index) const
{
	const std::vector<const std::string*>& strings = _strings[id];
	if (index < strings.size()) return *strings[index];
	// Past the end: the table raises what it raises for a missing index.
	return _vocabulary.value(id, index);
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
}


inline const FastInfosetParser::NameEntry& FastInfosetParser::nameAt(unsigned int index, bool element)
{
	const std::deque<NameEntry>& names = _names[element];
	if (index < names.size() && names[index].resolved) return names[index];
	return resolveName(index, element);
}


const FastInfosetParser::NameEntry& FastInfosetParser::resolveName(unsigned int index, bool element)
{
	// The table raises what it raises for a missing index.
	const QualifiedNameEntry& entry = getQualifiedNameEntry(index, element);
	ResolvedQualName name;
	name.pPrefix = &resolve(DocumentVocabulary::PREFIX, entry.prefixId());
	name.pUri = &resolve(DocumentVocabulary::NAMESPACE_NAME, entry.namespaceId());
	name.pLocalName = &resolve(DocumentVocabulary::LOCAL_NAME, entry.localNameId());
	std::deque<NameEntry>& names = _names[element];
	if (names.size() <= index) names.resize(getQNameVocabulary(element).size());
	NameEntry& resolved = names[index];
	resolved.name = name;
	resolved.qname.clear();
	if (!name.pPrefix->empty())
	{
		resolved.qname.reserve(name.pPrefix->size() + 1 + name.pLocalName->size());
		resolved.qname.append(*name.pPrefix).append(1, ':').append(*name.pLocalName);
	}
	resolved.resolved = true;
	return resolved;
}


const FastInfosetParser::NameEntry& FastInfosetParser::addName(const QualifiedNameEntry& entry, const ResolvedQualName& name, bool element)
{
	bool found = false;
	const unsigned int index = getQNameVocabulary(element).index(entry, found);
	std::deque<NameEntry>& names = _names[element];
	if (names.size() <= index) names.resize(getQNameVocabulary(element).size());
	NameEntry& added = names[index];
	if (!added.resolved)
	{
		added.name = name;
		added.qname.clear();
		if (!name.pPrefix->empty()) added.qname.append(*name.pPrefix).append(1, ':').append(*name.pLocalName);
		added.resolved = true;
	}
	return added;
}


const std::string& FastInfosetParser::resolve(DocumentVocabulary::ID id, unsigned int index) const
{
	// A name from an initial vocabulary marks an absent prefix or namespace
	// with all bits set; it stands for no prefix or namespace, which the
	// tables cannot look up.
	if (index == ABSENT) return EMPTY_STRING;
	return stringAt(id, index);
}


Vocabulary<QualifiedNameEntry>& FastInfosetParser::getQNameVocabulary(bool element)
{
	return element ? *_vocabulary.elementVocabulary() : *_vocabulary.attributeVocabulary();
}


const QualifiedNameEntry& FastInfosetParser::getQualifiedNameEntry(unsigned int index, bool element)
{
	return getQNameVocabulary(element).value(index);
}


//
// Structure
//
void FastInfosetParser::parseDocument(BitStreamReader& r)
{
	_openElements.clear();
	_namespaceDeclarations.clear();
	// The qualified name reported with the namespace-prefixes feature off is
	// the last one formed; it outlives the views rebuilt below.
	if (_pQName != &_qname) _qname = *_pQName;
	_pQName = &_qname;
	// A reset keeps the alphabets, so those that the previous document added
	// would shift the indexes of this document's own: every document starts
	// from the alphabets the parser was built with.
	_vocabulary.restrictedAlphabets() = _alphabets;
	Decoder::documentPreHeader(r, _xmlDeclaration);
	if (_pDocumentHandler) _pDocumentHandler->setWriteXMLDeclaration(!_xmlDeclaration.empty());
	Decoder::OpenHeaderParts parts;
	{
		Decoder::ExternalLoading loading(_loadExternalVocabularies);
		parts = Decoder::documentHeader(r, _vocabulary, _pDocumentHandler);
	}
	syncTables();
	if (_pDocumentHandler) _pDocumentHandler->setDocumentVocabulary(_vocabulary);
	parseDocumentChildren(r, parts);
	if (_pContentHandler) _pContentHandler->startDocument();
	parseElementChildren(r);
	if (_pContentHandler) _pContentHandler->endDocument();
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
		poco_assert(id == 60);
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
		poco_assert(id == 120);
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
				const std::string& text = stringAt(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, index);
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

	_namespaceDeclarations.clear();
	_attributes.clear();
	if (window >> 63) parseAttributes(r);
	if (_pContentHandler)
		_pContentHandler->startElement(*element.name.pUri, *element.name.pLocalName, qualifiedName(element), _attributes);
	_openElements.push_back(&element);
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
				_attributes.add(_names[0][nameIndex], stringAt(DocumentVocabulary::ATTRIBUTE_VALUE, valueIndex));
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
	else if ((code & 0xF0) == 0xE0)
	{
		r.advance(8);
		if (code == 0xE1) parseProcessingInstruction(r);
		else if (code == 0xE2) parseComment(r);
		else throw FISEncodingException(BAD_CHILD);
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
	_namespaceDeclarations.clear();

	if (((window >> 57) & 0x3F) == 0x38)
	{
		unsigned char bits = 0;
		r.skip(6);
		if (!r.read(bits, 4)) throw FISParseException(END_OF_ELEMENT);
		while (bits != 15)
		{
			if (_namespaceDeclarations.size() >= _maxNamespaceDeclarations)
				throw FISParseException("Maximum number of namespace declarations exceeded");
			r.skip(2);
			parseNamespaceAttribute(r);
			if (!r.read(bits, 4)) throw FISParseException(END_OF_ELEMENT);
		}
		r.skip(6);
	}

	const NameEntry& element = parseQualifiedNameOrIndex(r, true);

	_attributes.clear();
	if (hasAttributes) parseAttributes(r);

	if (_pContentHandler)
		_pContentHandler->startElement(*element.name.pUri, *element.name.pLocalName, qualifiedName(element), _attributes);
	_openElements.push_back(&element);
}


void FastInfosetParser::endElement(const NameEntry& name)
{
	if (!_pContentHandler) return;
	_pContentHandler->endElement(*name.name.pUri, *name.name.pLocalName, qualifiedName(name));
	// The declaration list is shared by all elements: it holds those of the
	// element read last, reported in declaration order.
	for (const NamespaceDeclaration& declaration: _namespaceDeclarations)
		_pContentHandler->endPrefixMapping(*declaration.pPrefix);
}


inline const std::string& FastInfosetParser::qualifiedName(const NameEntry& name)
{
	// With the feature off the qualified name is not formed: the last one
	// formed stays (empty unless the feature was on before).
	if (_namespacePrefixes) _pQName = &name.qname;
	return *_pQName;
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
	if (_pContentHandler) _pContentHandler->startPrefixMapping(*declaration.pPrefix, *declaration.pURI);
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
	_attributes.add(name, pValue->data(), pValue->size());
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
		_attributes.add(name, stringAt(DocumentVocabulary::ATTRIBUTE_VALUE, index));
		return true;
	}
	// 0, the add-to-table bit, 00 for UTF-8, the length at the fifth bit.
	std::size_t length = 0;
	if (available < 4 || ((window >> 60) & 3) != DocumentVocabulary::UTF8) return false;
	if (!FastDecoding::stringLengthAt(4, window << 4, available - 4, length, size)) return false;
	const bool addToTable = ((window >> 62) & 1) != 0;
	r.advance(4 + size);
	const char* pData = 0;
	if (!r.readView(pData, length))
	{
		r.read(_octets, length);
		pData = _octets.data();
	}
	if (addToTable)
	{
		// The value now lives in the table: the list refers to it there.
		_identifying.assign(pData, length);
		_attributes.add(name, stringAt(DocumentVocabulary::ATTRIBUTE_VALUE, addString(DocumentVocabulary::ATTRIBUTE_VALUE, _identifying)));
	}
	else _attributes.add(name, pData, length);
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
		return &stringAt(id, index);
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
		return &stringAt(id, index);
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
		_pIndexedValue->reset(stringAt(id, index));
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
		unsigned int alphabet = 0;
		Decoder::integer(r, alphabet);
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeAlphabet(_octets, _vocabulary.restrictedAlphabets().alphabet(alphabet), _text);
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
		unsigned int alphabet = 0;
		Decoder::integer(r, alphabet);
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeAlphabet(_octets, _vocabulary.restrictedAlphabets().alphabet(alphabet), _pLiteralValue->content());
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
		const std::string& text = stringAt(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, index);
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
	if (_pLexicalHandler && cdata) _pLexicalHandler->startCDATA();
	if (_pFISContentHandler) pValue->handle(_pFISContentHandler);
	else if (_pContentHandler) pValue->handle(_pContentHandler);
	if (_pLexicalHandler && cdata) _pLexicalHandler->endCDATA();
}


inline void FastInfosetParser::characters(const char* data, std::size_t length)
	/// Plain text goes to characters() for every kind of content handler.
{
	if (_pContentHandler) _pContentHandler->characters(data, 0, static_cast<int>(length));
}


void FastInfosetParser::parseComment(BitStreamReader& r)
{
	if (r.bitPos() != 0) throw FISEncodingException("Illegal startposition for a Comment value");
	unsigned int algorithm = 0;
	const std::string* pText = parseNonIdentifyingStringOrIndexXML(r, DocumentVocabulary::OTHER_STRING, algorithm);
	if (_pLexicalHandler) _pLexicalHandler->comment(pText->data(), 0, static_cast<int>(pText->size()));
}


void FastInfosetParser::parseProcessingInstruction(BitStreamReader& r)
{
	const std::string* pTarget = parseIdentifyingStringOrIndex(r, DocumentVocabulary::OTHER_NCNAME);
	unsigned int algorithm = 0;
	const std::string* pData = parseNonIdentifyingStringOrIndexXML(r, DocumentVocabulary::OTHER_STRING, algorithm);
	if (_pContentHandler) _pContentHandler->processingInstruction(*pTarget, *pData);
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
	if (_pLexicalHandler) _pLexicalHandler->startDTD(EMPTY_STRING, *pPublicId, *pSystemId);

	unsigned char stat = 0;
	if (!r.read(stat, 4)) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	while (stat == 14)
	{
		r.skip(4);
		parseProcessingInstruction(r);
		if (!r.read(stat, 4)) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	}
	poco_assert(stat == 0x0f);
	if (_pLexicalHandler) _pLexicalHandler->endDTD();
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
	if (_pDTDHandler) _pDTDHandler->notationDecl(*pName, pPublicId, pSystemId);
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
	if (_pDTDHandler) _pDTDHandler->unparsedEntityDecl(*pName, pPublicId->empty() ? 0 : pPublicId, *pSystemId, *pNotationName);
}


//
// AttributeList
//
FastInfosetParser::AttributeList::AttributeList():
	_count(0)
{
	_entries.reserve(16);
}


void FastInfosetParser::AttributeList::clear()
{
	_count = 0;
}


inline FastInfosetParser::AttributeList::Entry& FastInfosetParser::AttributeList::next()
{
	if (static_cast<std::size_t>(_count) == _entries.size()) _entries.emplace_back();
	return _entries[_count++];
}


void FastInfosetParser::AttributeList::add(const NameEntry& name, const std::string& value)
{
	Entry& entry = next();
	entry.pName = &name;
	entry.pValue = &value;
}


void FastInfosetParser::AttributeList::add(const NameEntry& name, const char* value, std::size_t length)
{
	// The slot keeps its capacity from element to element.
	Entry& entry = next();
	entry.pName = &name;
	entry.copy.assign(value, length);
	entry.pValue = nullptr;
}


int FastInfosetParser::AttributeList::getIndex(const XMLString& name) const
{
	// Attributes carry no qualified name: only the empty name matches.
	return name.empty() && _count > 0 ? 0 : -1;
}


int FastInfosetParser::AttributeList::getIndex(const XMLString& namespaceURI, const XMLString& localName) const
{
	for (int i = 0; i < _count; ++i)
	{
		const ResolvedQualName& name = _entries[i].pName->name;
		if (*name.pUri == namespaceURI && *name.pLocalName == localName) return i;
	}
	return -1;
}


int FastInfosetParser::AttributeList::getLength() const
{
	return _count;
}


const XMLString& FastInfosetParser::AttributeList::getLocalName(int i) const
{
	poco_assert (0 <= i && i < _count);
	return *_entries[i].pName->name.pLocalName;
}


const XMLString& FastInfosetParser::AttributeList::getQName(int i) const
{
	poco_assert (0 <= i && i < _count);
	return EMPTY_STRING;
}


const XMLString& FastInfosetParser::AttributeList::getType(int i) const
{
	poco_assert (0 <= i && i < _count);
	return EMPTY_STRING;
}


const XMLString& FastInfosetParser::AttributeList::getType(const XMLString&) const
{
	return EMPTY_STRING;
}


const XMLString& FastInfosetParser::AttributeList::getType(const XMLString&, const XMLString&) const
{
	return EMPTY_STRING;
}


const XMLString& FastInfosetParser::AttributeList::getValue(int i) const
{
	poco_assert (0 <= i && i < _count);
	return _entries[i].value();
}


const XMLString& FastInfosetParser::AttributeList::getValue(const XMLString& qname) const
{
	int i = getIndex(qname);
	return i < 0 ? EMPTY_STRING : _entries[i].value();
}


const XMLString& FastInfosetParser::AttributeList::getValue(const XMLString& uri, const XMLString& localName) const
{
	int i = getIndex(uri, localName);
	return i < 0 ? EMPTY_STRING : _entries[i].value();
}


const XMLString& FastInfosetParser::AttributeList::getURI(int i) const
{
	poco_assert (0 <= i && i < _count);
	return *_entries[i].pName->name.pUri;
}


} } // namespace Ixor::FastInfoset
