#include "BenchSupport.h"
#include "TestSupport.h"
#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/VocabularyBuilder.h"
#include "Ixor/FastInfoset/VocabularyDocument.h"
#include "Poco/CountingStream.h"
#include "Poco/DeflatingStream.h"
#include "Poco/File.h"
#include "Poco/MemoryStream.h"
#include "Poco/NumberFormatter.h"
#include "Poco/Path.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/XML/XMLException.h"
#include "Poco/XML/XMLWriter.h"
#include <expat.h>
#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <algorithm>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>
#include <unordered_map>


using Ixor::XML::Attributes;
using Ixor::XML::XMLChar;
using Ixor::XML::XMLReader;
using Ixor::XML::XMLString;


namespace Bench {


std::string readFile(const std::string& path)
{
	// Read straight into a string of the file's size: the profiling tool's
	// peak memory must not include a second copy.
	std::ifstream in(path, std::ios::binary | std::ios::ate);
	if (!in) throw Ixor::FileNotFoundException(path);
	const std::streamoff size = in.tellg();
	std::string content(static_cast<std::size_t>(size), '\0');
	in.seekg(0);
	if (size > 0) in.read(&content[0], size);
	if (!in || in.gcount() != size) throw Ixor::IOException("cannot read", path);
	return content;
}


bool isFastInfoset(const std::string& data)
{
	static const char IDENTIFICATION[] = "\xE0\x00\x00\x01";
	static const char DECLARATION[] = "<?xml encoding='finf'";
	static const char DECLARATION_DQ[] = "<?xml encoding=\"finf\"";
	return data.compare(0, 4, IDENTIFICATION, 4) == 0
		|| data.compare(0, sizeof(DECLARATION) - 1, DECLARATION) == 0
		|| data.compare(0, sizeof(DECLARATION_DQ) - 1, DECLARATION_DQ) == 0;
}


std::string encodeFastInfoset(const std::string& xml)
{
	Poco::MemoryInputStream in(xml.data(), xml.size());
	std::ostringstream out;
	Ixor::FastInfoset::Converter::convertToFIS(in, out);
	return out.str();
}


std::size_t gzipSize(const std::string& data)
{
	Poco::CountingOutputStream counter;
	{
		Poco::DeflatingOutputStream gzip(counter, Poco::DeflatingStreamBuf::STREAM_GZIP);
		gzip.write(data.data(), static_cast<std::streamsize>(data.size()));
		gzip.close();
	}
	return static_cast<std::size_t>(counter.chars());
}


//
// NullHandler
//
void NullHandler::startElement(const XMLString&, const XMLString&, const XMLString&, const Attributes&)
{
	++counts.elements;
}


void NullHandler::characters(const XMLChar[], int, int length)
{
	counts.characters += static_cast<std::uint64_t>(length);
}


void NullHandler::ignorableWhitespace(const XMLChar[], int, int length)
{
	counts.characters += static_cast<std::uint64_t>(length);
}


//
// OutputBuffer
//
OutputBuffer::OutputBuffer():
	_stream(this)
{
	grow(64*1024);
}


void OutputBuffer::reset()
{
	setp(&_buffer[0], &_buffer[0] + _buffer.size());
	_stream.clear();
}


std::string OutputBuffer::str() const
{
	return std::string(pbase(), size());
}


OutputBuffer::int_type OutputBuffer::overflow(int_type c)
{
	if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
	grow(size() + 1);
	*pptr() = traits_type::to_char_type(c);
	pbump(1);
	return c;
}


std::streamsize OutputBuffer::xsputn(const char* s, std::streamsize n)
{
	const std::size_t count = static_cast<std::size_t>(n);
	if (count > static_cast<std::size_t>(epptr() - pptr())) grow(size() + count);
	std::memcpy(pptr(), s, count);
	// pbump takes an int: step in pieces for blocks beyond its range.
	for (std::size_t left = count; left > 0; )
	{
		const int step = static_cast<int>(std::min<std::size_t>(left, std::numeric_limits<int>::max()));
		pbump(step);
		left -= static_cast<std::size_t>(step);
	}
	return n;
}


void OutputBuffer::grow(std::size_t needed)
{
	const std::size_t used = _buffer.empty() ? 0 : size();
	std::size_t capacity = _buffer.size() ? _buffer.size() : 1;
	while (capacity < needed) capacity *= 2;
	if (capacity == _buffer.size()) return;
	_buffer.resize(capacity);
	char* pBase = &_buffer[0];
	setp(pBase, pBase + capacity);
	for (std::size_t left = used; left > 0; )
	{
		const int step = static_cast<int>(std::min<std::size_t>(left, std::numeric_limits<int>::max()));
		pbump(step);
		left -= static_cast<std::size_t>(step);
	}
}


//
// EventList
//
class EventList::RecordedAttributes: public Ixor::XML::Attributes
	/// The attributes of one recorded element, as references into the list.
{
public:
	RecordedAttributes(const EventList& list, const Attribute* pFirst, int count):
		_list(list),
		_pFirst(pFirst),
		_count(count)
	{
	}

	int getIndex(const XMLString& qname) const
	{
		for (int i = 0; i < _count; ++i)
		{
			if (qnameOf(i) == qname) return i;
		}
		return -1;
	}

	int getIndex(const XMLString& namespaceURI, const XMLString& localName) const
	{
		for (int i = 0; i < _count; ++i)
		{
			if (getURI(i) == namespaceURI && getLocalName(i) == localName) return i;
		}
		return -1;
	}

	int getLength() const
	{
		return _count;
	}

	const XMLString& getLocalName(int i) const
	{
		return _list._strings[name(i).localName];
	}

	const XMLString& getQName(int i) const
	{
		return qnameOf(i);
	}

	const XMLString& getType(int i) const
	{
		return _list._strings[attribute(i).type];
	}

	const XMLString& getType(const XMLString& qname) const
	{
		const int i = getIndex(qname);
		return i < 0 ? EMPTY : getType(i);
	}

	const XMLString& getType(const XMLString& namespaceURI, const XMLString& localName) const
	{
		const int i = getIndex(namespaceURI, localName);
		return i < 0 ? EMPTY : getType(i);
	}

	const XMLString& getValue(int i) const
	{
		return _list._strings[attribute(i).value];
	}

	const XMLString& getValue(const XMLString& qname) const
	{
		const int i = getIndex(qname);
		return i < 0 ? EMPTY : getValue(i);
	}

	const XMLString& getValue(const XMLString& namespaceURI, const XMLString& localName) const
	{
		const int i = getIndex(namespaceURI, localName);
		return i < 0 ? EMPTY : getValue(i);
	}

	const XMLString& getURI(int i) const
	{
		return _list._strings[name(i).uri];
	}

private:
	const Attribute& attribute(int i) const
	{
		poco_assert (0 <= i && i < _count);
		return _pFirst[i];
	}

	const Name& name(int i) const
	{
		return _list._names[attribute(i).name];
	}

	const XMLString& qnameOf(int i) const
	{
		return _list._strings[name(i).qname];
	}

	static const XMLString EMPTY;

	const EventList& _list;
	const Attribute* _pFirst;
	int _count;
};


const XMLString EventList::RecordedAttributes::EMPTY;


class EventRecorder:
	public Ixor::XML::ContentHandler,
	public Ixor::XML::LexicalHandler,
	public Ixor::XML::DTDHandler
	/// Fills an EventList from the host parser's events.
{
public:
	explicit EventRecorder(EventList& list):
		_list(list)
	{
	}

	void setDocumentLocator(const Ixor::XML::Locator*) {}
	void startDocument() { add(EventList::START_DOCUMENT); }
	void endDocument() { add(EventList::END_DOCUMENT); }

	void startElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Attributes& attributes)
	{
		const std::uint32_t first = static_cast<std::uint32_t>(_list._attributes.size());
		const int count = attributes.getLength();
		for (int i = 0; i < count; ++i)
		{
			EventList::Attribute attribute;
			attribute.name = name(attributes.getURI(i), attributes.getLocalName(i), attributes.getQName(i));
			attribute.type = string(attributes.getType(i));
			attribute.value = string(attributes.getValue(i));
			_list._attributes.push_back(attribute);
		}
		add(EventList::START_ELEMENT, name(uri, localName, qname), first, static_cast<std::uint32_t>(count));
	}

	void endElement(const XMLString& uri, const XMLString& localName, const XMLString& qname)
	{
		add(EventList::END_ELEMENT, name(uri, localName, qname));
	}

	void characters(const XMLChar ch[], int start, int length) { addText(EventList::CHARACTERS, ch + start, length); }
	void ignorableWhitespace(const XMLChar ch[], int start, int length) { addText(EventList::IGNORABLE_WHITESPACE, ch + start, length); }
	void processingInstruction(const XMLString& target, const XMLString& data) { add(EventList::PROCESSING_INSTRUCTION, string(target), string(data)); }
	void startPrefixMapping(const XMLString& prefix, const XMLString& uri) { add(EventList::START_PREFIX_MAPPING, string(prefix), string(uri)); }
	void endPrefixMapping(const XMLString& prefix) { add(EventList::END_PREFIX_MAPPING, string(prefix)); }
	void skippedEntity(const XMLString& name) { add(EventList::SKIPPED_ENTITY, string(name)); }

	void startDTD(const XMLString& name, const XMLString& publicId, const XMLString& systemId)
	{
		add(EventList::START_DTD, string(name), string(publicId), string(systemId));
	}

	void endDTD() { add(EventList::END_DTD); }
	void startEntity(const XMLString& name) { add(EventList::START_ENTITY, string(name)); }
	void endEntity(const XMLString& name) { add(EventList::END_ENTITY, string(name)); }
	void startCDATA() { add(EventList::START_CDATA); }
	void endCDATA() { add(EventList::END_CDATA); }
	void comment(const XMLChar ch[], int start, int length) { addText(EventList::COMMENT, ch + start, length); }

	void notationDecl(const XMLString& name, const XMLString* publicId, const XMLString* systemId)
	{
		add(EventList::NOTATION_DECL, string(name), optional(publicId), optional(systemId));
	}

	void unparsedEntityDecl(const XMLString& name, const XMLString* publicId, const XMLString& systemId, const XMLString& notationName)
	{
		add(EventList::UNPARSED_ENTITY_DECL, string(name), optional(publicId), string(systemId), string(notationName));
	}

private:
	void add(EventList::Kind kind, std::uint32_t a = 0, std::uint32_t b = 0, std::uint32_t c = 0, std::uint32_t d = 0)
	{
		EventList::Event event;
		event.kind = kind;
		event.a = a;
		event.b = b;
		event.c = c;
		event.d = d;
		_list._events.push_back(event);
	}

	void addText(EventList::Kind kind, const XMLChar* text, int length)
	{
		const std::size_t size = length > 0 ? static_cast<std::size_t>(length) : 0;
		poco_assert (_list._text.size() + size < EventList::NONE);
		// Adjacent character data is one event, as convertToFIS hands it to
		// its writer.
		if (kind == EventList::CHARACTERS && !_list._events.empty() && _list._events.back().kind == EventList::CHARACTERS)
			_list._events.back().b += static_cast<std::uint32_t>(size);
		else
			add(kind, static_cast<std::uint32_t>(_list._text.size()), static_cast<std::uint32_t>(size));
		_list._text.append(text, size);
	}

	std::uint32_t string(const XMLString& value)
	{
		auto it = _stringIds.find(value);
		if (it != _stringIds.end()) return it->second;
		const std::uint32_t id = static_cast<std::uint32_t>(_list._strings.size());
		_list._strings.push_back(value);
		_stringIds.emplace(value, id);
		return id;
	}

	std::uint32_t optional(const XMLString* pValue)
	{
		return pValue ? string(*pValue) : EventList::NONE;
	}

	std::uint32_t name(const XMLString& uri, const XMLString& localName, const XMLString& qname)
	{
		EventList::Name name;
		name.uri = string(uri);
		name.localName = string(localName);
		name.qname = string(qname);
		const std::uint64_t key = (std::uint64_t(name.uri) << 42) ^ (std::uint64_t(name.localName) << 21) ^ name.qname;
		auto it = _nameIds.find(key);
		if (it != _nameIds.end())
		{
			const EventList::Name& known = _list._names[it->second];
			if (known.uri == name.uri && known.localName == name.localName && known.qname == name.qname) return it->second;
		}
		const std::uint32_t id = static_cast<std::uint32_t>(_list._names.size());
		_list._names.push_back(name);
		_nameIds[key] = id;
		return id;
	}

	EventList& _list;
	std::unordered_map<std::string, std::uint32_t> _stringIds;
	std::unordered_map<std::uint64_t, std::uint32_t> _nameIds;
};


EventList::EventList()
{
}


EventList::~EventList()
{
}


void EventList::record(const std::string& xml)
{
	_events.clear();
	_strings.clear();
	_names.clear();
	_attributes.clear();
	_text.clear();

	EventRecorder recorder(*this);
	Ixor::XML::SAXParser parser;
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	parser.setContentHandler(&recorder);
	parser.setDTDHandler(&recorder);
	parser.setProperty(XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(&recorder));
	parser.parseMemoryNP(xml.data(), xml.size());

	_events.shrink_to_fit();
	_attributes.shrink_to_fit();
	_text.shrink_to_fit();
}


void EventList::replay(Ixor::XML::ContentHandler& content, Ixor::XML::LexicalHandler* pLexical, Ixor::XML::DTDHandler* pDTD) const
{
	const std::string* const pStrings = _strings.data();
	const char* const pText = _text.data();
	for (const Event& e: _events)
	{
		switch (e.kind)
		{
		case START_DOCUMENT:
			content.startDocument();
			break;
		case END_DOCUMENT:
			content.endDocument();
			break;
		case START_ELEMENT:
			{
				const Name& name = _names[e.a];
				RecordedAttributes attributes(*this, _attributes.data() + e.b, static_cast<int>(e.c));
				content.startElement(pStrings[name.uri], pStrings[name.localName], pStrings[name.qname], attributes);
			}
			break;
		case END_ELEMENT:
			{
				const Name& name = _names[e.a];
				content.endElement(pStrings[name.uri], pStrings[name.localName], pStrings[name.qname]);
			}
			break;
		case CHARACTERS:
			content.characters(pText + e.a, 0, static_cast<int>(e.b));
			break;
		case IGNORABLE_WHITESPACE:
			content.ignorableWhitespace(pText + e.a, 0, static_cast<int>(e.b));
			break;
		case PROCESSING_INSTRUCTION:
			content.processingInstruction(pStrings[e.a], pStrings[e.b]);
			break;
		case START_PREFIX_MAPPING:
			content.startPrefixMapping(pStrings[e.a], pStrings[e.b]);
			break;
		case END_PREFIX_MAPPING:
			content.endPrefixMapping(pStrings[e.a]);
			break;
		case SKIPPED_ENTITY:
			content.skippedEntity(pStrings[e.a]);
			break;
		case START_DTD:
			if (pLexical) pLexical->startDTD(pStrings[e.a], pStrings[e.b], pStrings[e.c]);
			break;
		case END_DTD:
			if (pLexical) pLexical->endDTD();
			break;
		case START_ENTITY:
			if (pLexical) pLexical->startEntity(pStrings[e.a]);
			break;
		case END_ENTITY:
			if (pLexical) pLexical->endEntity(pStrings[e.a]);
			break;
		case START_CDATA:
			if (pLexical) pLexical->startCDATA();
			break;
		case END_CDATA:
			if (pLexical) pLexical->endCDATA();
			break;
		case COMMENT:
			if (pLexical) pLexical->comment(pText + e.a, 0, static_cast<int>(e.b));
			break;
		case NOTATION_DECL:
			if (pDTD) pDTD->notationDecl(pStrings[e.a], e.b == NONE ? nullptr : &pStrings[e.b], e.c == NONE ? nullptr : &pStrings[e.c]);
			break;
		case UNPARSED_ENTITY_DECL:
			if (pDTD) pDTD->unparsedEntityDecl(pStrings[e.a], e.b == NONE ? nullptr : &pStrings[e.b], pStrings[e.c], pStrings[e.d]);
			break;
		}
	}
}


std::size_t EventList::memoryUsed() const
{
	std::size_t used = _events.capacity()*sizeof(Event) + _names.capacity()*sizeof(Name)
		+ _attributes.capacity()*sizeof(Attribute) + _text.capacity() + _strings.capacity()*sizeof(std::string);
	for (const std::string& s: _strings)
	{
		if (s.capacity() > 15) used += s.capacity() + 1;
	}
	return used;
}


//
// ExpatParser
//
namespace
{
	Counts& expatCounts(void* pUserData)
	{
		return *static_cast<Counts*>(pUserData);
	}

	void XMLCALL expatStartElement(void* pUserData, const XML_Char*, const XML_Char**) { ++expatCounts(pUserData).elements; }
	void XMLCALL expatEndElement(void*, const XML_Char*) {}
	void XMLCALL expatCharacters(void* pUserData, const XML_Char*, int length) { expatCounts(pUserData).characters += static_cast<std::uint64_t>(length); }
	void XMLCALL expatStartNamespace(void*, const XML_Char*, const XML_Char*) {}
	void XMLCALL expatEndNamespace(void*, const XML_Char*) {}
	void XMLCALL expatComment(void*, const XML_Char*) {}
	void XMLCALL expatProcessingInstruction(void*, const XML_Char*, const XML_Char*) {}
	void XMLCALL expatStartCDATA(void*) {}
	void XMLCALL expatEndCDATA(void*) {}
	void XMLCALL expatStartDoctype(void*, const XML_Char*, const XML_Char*, const XML_Char*, int) {}
	void XMLCALL expatEndDoctype(void*) {}
}


ExpatParser::ExpatParser():
	// The host parser separates namespace and local name with a tab too.
	_parser(XML_ParserCreateNS(nullptr, '\t'))
{
	if (!_parser) throw Ixor::XML::XMLException("cannot create expat parser");
}


ExpatParser::~ExpatParser()
{
	XML_ParserFree(_parser);
}


void ExpatParser::setHandlers()
{
	XML_SetUserData(_parser, &counts);
	XML_SetReturnNSTriplet(_parser, 1);
	XML_SetElementHandler(_parser, expatStartElement, expatEndElement);
	XML_SetCharacterDataHandler(_parser, expatCharacters);
	XML_SetNamespaceDeclHandler(_parser, expatStartNamespace, expatEndNamespace);
	XML_SetCommentHandler(_parser, expatComment);
	XML_SetProcessingInstructionHandler(_parser, expatProcessingInstruction);
	XML_SetCdataSectionHandler(_parser, expatStartCDATA, expatEndCDATA);
	XML_SetDoctypeDeclHandler(_parser, expatStartDoctype, expatEndDoctype);
}


void ExpatParser::parse(const char* data, std::size_t size)
{
	// A reset clears the handlers as well.
	XML_ParserReset(_parser, nullptr);
	setHandlers();
	// In pieces, as when reading a stream: expat copies what it is given
	// into its own buffer, and a whole document would be a second copy.
	const std::size_t PIECE = 64*1024;
	for (std::size_t done = 0; ; done += PIECE)
	{
		const std::size_t length = std::min(PIECE, size - done);
		const bool last = done + length == size;
		if (XML_Parse(_parser, data + done, static_cast<int>(length), last) != XML_STATUS_OK)
		{
			throw Ixor::XML::XMLException(XML_ErrorString(XML_GetErrorCode(_parser)),
				"line " + Poco::NumberFormatter::format(static_cast<Poco::UInt64>(XML_GetCurrentLineNumber(_parser))));
		}
		if (last) break;
	}
}


//
// LibXml2Parser
//
namespace
{
	Counts& libxml2Counts(void* pContext)
	{
		return *static_cast<Counts*>(static_cast<xmlParserCtxtPtr>(pContext)->_private);
	}

	void libxml2StartElement(void* pContext, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**, int, int, const xmlChar**)
	{
		++libxml2Counts(pContext).elements;
	}

	void libxml2EndElement(void*, const xmlChar*, const xmlChar*, const xmlChar*) {}
	void libxml2Characters(void* pContext, const xmlChar*, int length) { libxml2Counts(pContext).characters += static_cast<std::uint64_t>(length); }
	void libxml2Comment(void*, const xmlChar*) {}
	void libxml2ProcessingInstruction(void*, const xmlChar*, const xmlChar*) {}
	void libxml2Error(void*, xmlErrorPtr) {}

	xmlSAXHandler makeLibXml2Handler()
	{
		xmlSAXHandler handler;
		std::memset(&handler, 0, sizeof(handler));
		handler.initialized = XML_SAX2_MAGIC;
		// The document and internal subset callbacks of libxml2 itself, so
		// that entities and attribute defaults of the internal subset work;
		// they build the document node only, not the element tree.
		handler.startDocument = xmlSAX2StartDocument;
		handler.endDocument = xmlSAX2EndDocument;
		handler.internalSubset = xmlSAX2InternalSubset;
		handler.entityDecl = xmlSAX2EntityDecl;
		handler.getEntity = xmlSAX2GetEntity;
		handler.getParameterEntity = xmlSAX2GetParameterEntity;
		handler.attributeDecl = xmlSAX2AttributeDecl;
		handler.elementDecl = xmlSAX2ElementDecl;
		handler.notationDecl = xmlSAX2NotationDecl;
		handler.unparsedEntityDecl = xmlSAX2UnparsedEntityDecl;
		handler.startElementNs = libxml2StartElement;
		handler.endElementNs = libxml2EndElement;
		handler.characters = libxml2Characters;
		handler.ignorableWhitespace = libxml2Characters;
		handler.cdataBlock = libxml2Characters;
		handler.comment = libxml2Comment;
		handler.processingInstruction = libxml2ProcessingInstruction;
		handler.serror = libxml2Error;
		return handler;
	}

	const xmlSAXHandler LIBXML2_HANDLER = makeLibXml2Handler();
}


LibXml2Parser::LibXml2Parser()
{
	xmlInitParser();
}


void LibXml2Parser::parse(const char* data, std::size_t size)
{
	poco_assert (size <= static_cast<std::size_t>(std::numeric_limits<int>::max()));
	// Pushed in pieces, as expat is: the memory parser of libxml2 would
	// copy the whole document first.
	const std::size_t PIECE = 64*1024;
	const std::size_t first = std::min<std::size_t>(4, size);
	xmlParserCtxtPtr pContext = xmlCreatePushParserCtxt(const_cast<xmlSAXHandler*>(&LIBXML2_HANDLER), nullptr, data, static_cast<int>(first), nullptr);
	if (!pContext) throw Ixor::XML::XMLException("cannot create libxml2 parser");
	pContext->_private = &counts;
	xmlCtxtUseOptions(pContext, XML_PARSE_HUGE | XML_PARSE_NONET);
	for (std::size_t done = first; ; done += PIECE)
	{
		const std::size_t length = std::min(PIECE, size - done);
		const bool last = done + length == size;
		if (xmlParseChunk(pContext, data + done, static_cast<int>(length), last) != 0 || last) break;
	}
	const bool wellFormed = pContext->wellFormed != 0;
	const int line = pContext->input ? pContext->input->line : 0;
	if (pContext->myDoc) xmlFreeDoc(pContext->myDoc);
	pContext->myDoc = nullptr;
	xmlFreeParserCtxt(pContext);
	if (!wellFormed)
		throw Ixor::XML::XMLException("libxml2 found the document malformed", "line " + Poco::NumberFormatter::format(line));
}


//
// Measurements
//
void setUpFastInfosetParser(Ixor::FastInfoset::FastInfosetParser& parser, NullHandler& handler)
{
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	handler.attachTo(parser);
}


void setUpXMLParser(Ixor::XML::SAXParser& parser, NullHandler& handler)
{
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	handler.attachTo(parser);
}


void parseFastInfoset(Ixor::FastInfoset::FastInfosetParser& parser, const std::string& fi)
{
	parser.parseMemoryNP(fi.data(), fi.size());
}


void parseXML(Ixor::XML::SAXParser& parser, const std::string& xml)
{
	parser.parseMemoryNP(xml.data(), xml.size());
}


void writeFastInfoset(const EventList& events, OutputBuffer& out)
{
	out.reset();
	Ixor::FastInfoset::FastInfosetWriter writer(out.stream(), false, Ixor::FastInfoset::DocumentVocabulary::VOC_MAP);
	events.replay(writer, &writer, &writer);
}


void writeFastInfoset(const EventList& events, OutputBuffer& out, const Ixor::FastInfoset::DocumentVocabulary& vocabulary)
{
	out.reset();
	Ixor::FastInfoset::FastInfosetWriter writer(out.stream(), false, vocabulary);
	writer.setExternalVocabulary(vocabulary.getURI(), vocabulary);
	events.replay(writer, &writer, &writer);
}


std::vector<std::string> vocabularySamples(const std::string& documentPath)
{
	Poco::Path folder(documentPath);
	const std::string name = folder.getBaseName();
	folder.makeParent().pushDirectory("vocabulary").pushDirectory(name);
	if (!Poco::File(folder).exists()) return std::vector<std::string>();
	return TestSupport::xmlFilesIn(folder.toString());
}


std::string buildVocabulary(const std::vector<std::string>& samplePaths, const std::string& uri)
{
	Ixor::FastInfoset::VocabularyBuilder builder;
	for (const std::string& path: samplePaths) builder.addXMLFile(path);
	std::ostringstream out;
	Ixor::FastInfoset::VocabularyDocument::save(builder.vocabulary(uri), out);
	return out.str();
}


void writeXML(const EventList& events, OutputBuffer& out)
{
	out.reset();
	Ixor::XML::XMLWriter writer(out.stream(), 0);
	events.replay(writer, &writer, &writer);
}


void convertToFastInfoset(const std::string& xml, OutputBuffer& out)
{
	out.reset();
	Poco::MemoryInputStream in(xml.data(), xml.size());
	Ixor::FastInfoset::Converter::convertToFIS(in, out.stream());
}


void convertToXML(const std::string& fi, OutputBuffer& out)
{
	out.reset();
	Poco::MemoryInputStream in(fi.data(), fi.size());
	Ixor::FastInfoset::Converter::convertToXML(in, out.stream(), 0);
}


} // namespace Bench
