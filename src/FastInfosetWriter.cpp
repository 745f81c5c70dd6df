#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/BoolEncoding.h"
#include "Ixor/FastInfoset/DWordEncoding.h"
#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/FloatEncoding.h"
#include "Ixor/FastInfoset/HashVocabulary.h"
#include "Ixor/FastInfoset/IntEncoding.h"
#include "Ixor/FastInfoset/LongEncoding.h"
#include "Ixor/FastInfoset/MapVocabulary.h"
#include "Ixor/FastInfoset/ShortEncoding.h"
#include "Ixor/FastInfoset/UUIDEncoding.h"
#include "Ixor/FastInfoset/VocabularyDocument.h"
#include "Ixor/FastInfoset/VocabularyHash.h"
#include "FastEncoding.h"
#include "XMLTextRules.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/SAX/AttributesImpl.h"
#include "Poco/XML/Name.h"
#include "Poco/NumberFormatter.h"
#include <algorithm>
#include <climits>
#include <cstring>


using Ixor::XML::XMLString;
using Ixor::XML::XMLChar;
using Ixor::XML::Attributes;
using Ixor::XML::NamespaceSupport;


namespace Ixor {
namespace FastInfoset {


namespace
{
	const Ixor::XML::AttributesImpl& noAttributes()
		/// The one empty attribute list of the attribute-less element calls;
		/// built on first use, then only read.
	{
		static const Ixor::XML::AttributesImpl empty;
		return empty;
	}

	const std::string& noPrefix()
	{
		static const std::string empty;
		return empty;
	}

	const char* const VECTOR_REFUSED = "A DocumentVocabulary with VOC_VECTOR implementation cannot be used by FastInfosetWriter";
}


FastInfosetWriter::FastInfosetWriter(std::ostream& out):
	_writer(out, false),
	_writeXMLDeclaration(false),
	_vocabulary(DocumentVocabulary::VOC_HASH),
	_prefixCounter(0),
	// The external vocabulary has no tables until one is set: an empty
	// hash vocabulary would cost a megabyte of slots for nothing.
	_externalVocabulary(DontInitialize()),
	_maxIndexedStringLength(16),
	_declarationCount(0),
	_attributeCount(0),
	_views(),
	_nameViews(),
	_nameCache(),
	_viewsRevision(~UInt64(0))
{
	init();
}


FastInfosetWriter::FastInfosetWriter(std::ostream& out, bool writeXMLDeclaration, DocumentVocabulary::VocabularyImpl impl):
	_writer(out, false),
	_writeXMLDeclaration(writeXMLDeclaration),
	_vocabulary(impl),
	_prefixCounter(0),
	_externalVocabulary(DontInitialize()),
	_maxIndexedStringLength(16),
	_declarationCount(0),
	_attributeCount(0),
	_views(),
	_nameViews(),
	_nameCache(),
	_viewsRevision(~UInt64(0))
{
	init();
}


FastInfosetWriter::FastInfosetWriter(std::ostream& out, bool writeXMLDeclaration, const DocumentVocabulary& vocabulary):
	_writer(out, false),
	_writeXMLDeclaration(writeXMLDeclaration),
	_vocabulary(vocabulary),
	_prefixCounter(0),
	_externalVocabulary(DontInitialize()),
	_maxIndexedStringLength(16),
	_declarationCount(0),
	_attributeCount(0),
	_views(),
	_nameViews(),
	_nameCache(),
	_viewsRevision(~UInt64(0))
{
	init();
}


FastInfosetWriter::~FastInfosetWriter()
{
}


void FastInfosetWriter::init()
{
	_states.push_back(UNINITIALIZED);
	_lastPrefix.pTable = 0;
	_lastPrefix.index = 0;
	_lastPrefix.pStored = 0;
	_lastNamespace.pTable = 0;
	_lastNamespace.index = 0;
	_lastNamespace.pStored = 0;
	_namespaceGeneration = 1;
	_emptyURIMapped = false;
	_prefixCacheMapped = false;
	_prefixCacheGeneration = 0;
	_uriCacheGeneration = 0;
	_attributePrefixGeneration = 0;
	_progress = NOT_STARTED;
	_depth = 0;
	_rootStarted = false;
	_elementName = StoredName();
	_openElements.reserve(16);
}


//
// Document and elements
//
void FastInfosetWriter::setDocumentLocator(const Ixor::XML::Locator*)
{
}


void FastInfosetWriter::startDocument()
{
	if (_progress == ENDED) refuse("startDocument()");
	if (_progress != NOT_STARTED) throw FISException("startDocument() inside a document");
	pushState(DOCUMENT);
	_namespaces.reset();
	++_namespaceGeneration;
	_contextDeclares.assign(1, true);   // the reset context declares "xml" and "xmlns"
	pushContext();
	_progress = PROLOG;
}


void FastInfosetWriter::endDocument()
{
	if (_progress != BODY && _progress != PROLOG) refuse("endDocument()");
	if (_states.back() != DOCUMENT) refuse("endDocument()");
	if (_progress == PROLOG) writeProlog();
	if (!_pendingEncodings.empty()) handleEncodedData();
	_writer.write(15u, 4);
	_writer.complete();
	popState();
	_progress = ENDED;
}


void FastInfosetWriter::startBody(const char* event)
	/// What an element at the document's level needs: a started document, no
	/// open document type declaration, no root element before, and the
	/// header and the prolog written.
{
	if (_progress != PROLOG && _progress != BODY) refuse(event);
	if (_states.back() != DOCUMENT || _rootStarted) refuse(event);
	if (_progress == PROLOG) writeProlog();
}


void FastInfosetWriter::writeProlog()
	/// The header, then what came before the root element, in its order:
	/// the prolog's strings enter the vocabulary only after the header has
	/// taken its initial vocabulary from it.
{
	writeHeader();
	_progress = BODY;
	for (const PrologItem& item: _prolog)
	{
		switch (item.kind)
		{
		case PrologItem::PI:        writePIItem(item.first, item.second); break;
		case PrologItem::COMMENT:   writeCommentItem(item.first); break;
		case PrologItem::DTD_START: writeDTDStart(item.first, item.second); break;
		case PrologItem::DTD_END:   writeDTDEnd(); break;
		}
	}
	_prolog.clear();
}


void FastInfosetWriter::refuse(const char* event, const std::string& name) const
	/// Throws the FISException that says why event makes no document here.
{
	std::string message(event);
	const State top = _states.back();
	if (_progress == NOT_STARTED) message += " before startDocument()";
	else if (_progress == ENDED) message += " after endDocument(): a writer writes one document";
	else if (top == DTD) message += " inside the document type declaration";
	else if (top == CDATA_SECTION) message += " inside a CDATA section";
	else if (_depth != 0)
	{
		const OpenElement& open = _openElements[_depth - 1];
		message += open.revision == _vocabulary.revision() ? " with the element " + open.toString() + " open" : " inside an element";
	}
	else if (_rootStarted) message += " after the root element";
	else message += " outside the root element";
	if (name.empty()) throw FISException(message);
	throw FISException(message, name);
}


void FastInfosetWriter::startElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Attributes& attributes)
{
	if (_depth == 0) startBody("startElement()");
	if (!_pendingEncodings.empty()) handleEncodedData();
	_prefix.clear();
	_declarationCount = 0;
	_attributeCount = 0;

	const std::string* pName = &localName;
	if (!localName.empty() && qname == localName)
	{
		// A name given without prefix stays so, as a DOM holds it: its
		// namespace becomes the default one where it is not.
		if (mappedURI(_prefix) != uri) declarePrefix(_prefix, uri);
	}
	else if (!localName.empty() && qname.empty())
	{
		if (!uri.empty() && !isMapped(uri)) declarePrefix(newPrefix(), uri);
		_prefix = prefixOf(uri);
	}
	else if (uri.empty() && localName.empty() && !qname.empty())
	{
		pName = &qname;
	}
	else if (!localName.empty() && !qname.empty())
	{
		Ixor::XML::Name::split(qname, _qnamePrefix, _qnameLocal);
		if (_qnamePrefix.empty()) _prefix = prefixOf(uri);
		else _prefix = _qnamePrefix;
		const std::string& mapped = mappedURI(_prefix);
		if ((mapped.empty() || mapped != uri) && !uri.empty()) declarePrefix(_prefix, uri);
	}
	else throw FISException("Tag mismatch", nameToString(localName, qname));

	handleNamespaces(attributes);
	// Everything is checked: the element starts on an octet.
	_writer.pad(false);
	_writer.write(false);
	writeElement(_prefix, uri, *pName);
	pushState(ELEMENT);
	_rootStarted = true;

	const int copies = _elementName.pPrefix && _elementName.pURI && _elementName.pLocalName ? 0 : keepNameParts(uri, *pName);
	if (_depth == _openElements.size()) _openElements.emplace_back();
	OpenElement& open = _openElements[_depth++];
	open.name = _elementName;
	open.revision = _vocabulary.revision();
	open.copies = copies;
}


int FastInfosetWriter::keepNameParts(const std::string& uri, const std::string& localName)
	/// Copies of the parts of the element's name that no table took, for
	/// the check of its end; they go when the element ends. Rare: only
	/// tables that are full refuse parts.
{
	const std::string* parts[3] = {&_prefix, &uri, &localName};
	const std::string** pStored[3] = {&_elementName.pPrefix, &_elementName.pURI, &_elementName.pLocalName};
	int copies = 0;
	for (int i = 0; i < 3; ++i)
	{
		if (*pStored[i]) continue;
		_openNameCopies.emplace_back(new std::string(*parts[i]));
		*pStored[i] = _openNameCopies.back().get();
		++copies;
	}
	return copies;
}


void FastInfosetWriter::endElement(const XMLString& uri, const XMLString& localName, const XMLString& qname)
{
	if (_states.back() != ELEMENT) refuse("endElement()", nameToString(localName, qname));
	const OpenElement& open = _openElements[_depth - 1];
	if (!open.matches(uri, localName, qname, _vocabulary.revision()))
	{
		const std::string endName = !qname.empty() || uri.empty() ? nameToString(localName, qname) : "{" + uri + "}" + localName;
		throw FISException("Mismatched end tag", endName + " ends " + open.toString());
	}
	if (!_pendingEncodings.empty()) handleEncodedData();
	_writer.write(15u, 4);
	popState();
	popContext();
	for (int i = open.copies; i > 0; --i) _openNameCopies.pop_back();
	--_depth;
}


bool FastInfosetWriter::OpenElement::matches(const std::string& endURI, const std::string& endLocalName, const std::string& endQName, UInt64 currentRevision) const
	/// As the host's XML writer compares: the same namespace name and local
	/// name, or the same qualified name. Once the vocabulary has new tables
	/// the stored parts are gone, and nothing can be compared.
{
	if (revision != currentRevision) return true;
	const std::string& local = *name.pLocalName;
	if (!endLocalName.empty() && VocabularyHash<std::string>::equal(local, endLocalName.data(), endLocalName.size())
		&& VocabularyHash<std::string>::equal(*name.pURI, endURI.data(), endURI.size()))
	{
		return true;
	}
	if (endQName.empty()) return false;
	const std::string& pre = *name.pPrefix;
	if (pre.empty()) return endQName == local;
	return endQName.size() == pre.size() + 1 + local.size() && endQName.compare(0, pre.size(), pre) == 0
		&& endQName[pre.size()] == ':' && endQName.compare(pre.size() + 1, std::string::npos, local) == 0;
}


std::string FastInfosetWriter::OpenElement::toString() const
{
	if (!name.pPrefix->empty()) return *name.pPrefix + ":" + *name.pLocalName;
	return name.pURI->empty() ? *name.pLocalName : "{" + *name.pURI + "}" + *name.pLocalName;
}


void FastInfosetWriter::startElement(const XMLString& uri, const XMLString& localName, const XMLString& qname)
{
	startElement(uri, localName, qname, noAttributes());
}


void FastInfosetWriter::emptyElement(const XMLString& uri, const XMLString& localName, const XMLString& qname)
{
	emptyElement(uri, localName, qname, noAttributes());
}


void FastInfosetWriter::emptyElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Attributes& attributes)
{
	startElement(uri, localName, qname, attributes);
	endElement(uri, localName, qname);
}


void FastInfosetWriter::dataElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const XMLString& data,
	const XMLString& attr1, const XMLString& value1,
	const XMLString& attr2, const XMLString& value2,
	const XMLString& attr3, const XMLString& value3)
{
	Ixor::XML::AttributesImpl attributes;
	if (!attr1.empty()) attributes.addAttribute(XMLString(), XMLString(), attr1, "CDATA", value1);
	if (!attr2.empty()) attributes.addAttribute(XMLString(), XMLString(), attr2, "CDATA", value2);
	if (!attr3.empty()) attributes.addAttribute(XMLString(), XMLString(), attr3, "CDATA", value3);
	if (data.empty())
	{
		emptyElement(uri, localName, qname, attributes);
	}
	else
	{
		startElement(uri, localName, qname, attributes);
		characters(data);
		endElement(uri, localName, qname);
	}
}


void FastInfosetWriter::handleNamespaces(const Attributes& attributes)
{
	addAttributes(attributes);
	addNamespaceAttributes();
	// The element's own context opens only now: its declarations were made
	// in the context current at its start event, where startPrefixMapping
	// declares too.
	pushContext();
}


void FastInfosetWriter::addNamespaceAttributes()
{
	// Declarations go out ordered by prefix, the default namespace first;
	// the prefix set of the namespace support is ordered already. A context
	// that received no declaration has none to give.
	if (!_contextDeclares.empty() && !_contextDeclares.back()) return;
	_declaredPrefixes.clear();
	_namespaces.getDeclaredPrefixes(_declaredPrefixes);
	for (const std::string& prefix: _declaredPrefixes)
	{
		if (_declarationCount == _declarations.size()) _declarations.emplace_back();
		std::pair<std::string, std::string>& declaration = _declarations[_declarationCount++];
		declaration.first = prefix;
		declaration.second = _namespaces.getURI(prefix);
	}
}


void FastInfosetWriter::addAttributes(const Attributes& attributes)
	/// Takes the attributes of the element, with the prefix of each, and
	/// declares what their prefixes need. The attribute list outlives the
	/// writing of the element: its strings are referred to, not copied.
{
	const int count = attributes.getLength();
	// A bit per attribute, chosen by its local name: only attributes whose
	// bits meet can be the same, and only then are they compared in full.
	UInt64 seen = 0;
	bool mayRepeat = false;
	for (int i = 0; i < count; ++i)
	{
		if (_attributeCount == _pendingAttributes.size()) _pendingAttributes.emplace_back();
		PendingAttribute& attribute = _pendingAttributes[_attributeCount++];
		attribute.pURI = &attributes.getURI(i);
		attribute.pLocalName = &attributes.getLocalName(i);
		attribute.pValue = &attributes.getValue(i);
		if (attribute.pLocalName->empty())
		{
			const XMLString& qname = attributes.getQName(i);
			// Without namespace processing the qualified name is the name, as
			// for elements: its prefix is part of it.
			if (attribute.pURI->empty())
			{
				attribute.pLocalName = &qname;
			}
			else
			{
				Ixor::XML::Name::split(qname, _qnamePrefix, attribute.localName);
				attribute.pLocalName = &attribute.localName;
			}
			if (attribute.pLocalName->empty()) throw FISException("Attribute without a name");
		}
		if (attribute.pURI->empty()) attribute.prefix.clear();
		else choosePrefix(_attributeCount - 1, attributes.getQName(i));

		const std::string& local = *attribute.pLocalName;
		const UInt64 bit = UInt64(1) << ((local.size() + static_cast<unsigned char>(local[0]) * 3 + static_cast<unsigned char>(local.back()) * 5) & 63);
		mayRepeat |= (seen & bit) != 0;
		seen |= bit;
	}
	if (mayRepeat) checkDistinctAttributes();
}


void FastInfosetWriter::choosePrefix(std::size_t index, const std::string& qname)
	/// An attribute with a namespace name needs a prefix: unprefixed
	/// attributes have no namespace. The prefix of its qualified name when
	/// it has one and it can mean that namespace here, else a prefix in
	/// scope for the namespace, else a new one; what is not in scope is
	/// declared on the element.
{
	PendingAttribute& attribute = _pendingAttributes[index];
	const std::string& uri = *attribute.pURI;
	const std::size_t colon = qname.find(':');
	if (colon != std::string::npos && colon != 0)
	{
		attribute.prefix.assign(qname, 0, colon);
		if (mappedURI(attribute.prefix) == uri) return;
		// A prefix that the element or an earlier attribute uses keeps its
		// meaning.
		if (!prefixUsedHere(attribute.prefix, index))
		{
			declarePrefix(attribute.prefix, uri);
			return;
		}
	}
	const std::string& inScope = attributePrefixOf(uri);
	if (!inScope.empty())
	{
		attribute.prefix = inScope;
		return;
	}
	attribute.prefix = newPrefix();
	declarePrefix(attribute.prefix, uri);
}


bool FastInfosetWriter::prefixUsedHere(const std::string& prefix, std::size_t before) const
{
	if (prefix == _prefix) return true;
	for (std::size_t i = 0; i < before; ++i)
	{
		if (_pendingAttributes[i].prefix == prefix) return true;
	}
	return false;
}


const std::string& FastInfosetWriter::attributePrefixOf(const std::string& uri)
	/// A prefix other than the empty one that is mapped to uri in scope, or
	/// the empty string when there is none. The namespace support may name
	/// the default namespace or a prefix that an inner declaration took over;
	/// neither serves an attribute.
{
	if (_attributePrefixGeneration != _namespaceGeneration || uri != _attributePrefixURI)
	{
		_attributePrefixURI = uri;
		_attributePrefixGeneration = _namespaceGeneration;
		const std::string& first = _namespaces.getPrefix(uri);
		if (!first.empty() && _namespaces.getURI(first) == uri)
		{
			_attributePrefix = first;
		}
		else
		{
			_attributePrefix.clear();
			_declaredPrefixes.clear();
			_namespaces.getPrefixes(uri, _declaredPrefixes);
			for (const std::string& prefix: _declaredPrefixes)
			{
				if (!prefix.empty() && _namespaces.getURI(prefix) == uri)
				{
					_attributePrefix = prefix;
					break;
				}
			}
		}
	}
	return _attributePrefix;
}


void FastInfosetWriter::checkDistinctAttributes()
	/// No two attributes of the element have the same namespace name and
	/// local name. Few are compared pairwise, many through a hash set of
	/// their positions.
{
	auto same = [this](std::size_t a, std::size_t b)
	{
		const PendingAttribute& first = _pendingAttributes[a];
		const PendingAttribute& second = _pendingAttributes[b];
		return *first.pLocalName == *second.pLocalName && *first.pURI == *second.pURI;
	};
	std::size_t twice = _attributeCount;
	if (_attributeCount <= 8)
	{
		for (std::size_t i = 1; i < _attributeCount && twice == _attributeCount; ++i)
		{
			for (std::size_t j = 0; j < i; ++j)
			{
				if (same(i, j))
				{
					twice = i;
					break;
				}
			}
		}
	}
	else
	{
		std::size_t size = 16;
		while (size < 2 * _attributeCount) size *= 2;
		const std::size_t FREE = ~std::size_t(0);
		_attributeSlots.assign(size, FREE);
		for (std::size_t i = 0; i < _attributeCount && twice == _attributeCount; ++i)
		{
			const std::string& local = *_pendingAttributes[i].pLocalName;
			std::size_t slot = VocabularyHash<std::string>::bytes(local.data(), local.size()) & (size - 1);
			while (_attributeSlots[slot] != FREE && twice == _attributeCount)
			{
				if (same(_attributeSlots[slot], i)) twice = i;
				slot = (slot + 1) & (size - 1);
			}
			_attributeSlots[slot] = i;
		}
	}
	if (twice == _attributeCount) return;
	const PendingAttribute& attribute = _pendingAttributes[twice];
	throw FISException("Duplicate attribute", attribute.prefix.empty() ? *attribute.pLocalName : attribute.prefix + ":" + *attribute.pLocalName);
}


void FastInfosetWriter::writeElement(const std::string& prefix, const std::string& uri, const std::string& localName)
{
	if (_writer.bitPos() != 1)
		throw FISEncodingException("Illegal startposition for an Element value");
	_writer.write(_attributeCount != 0);
	if (_declarationCount != 0)
	{
		_writer.write(0x38u, 6);                      // 111000: namespace attributes follow
		for (std::size_t i = 0; i < _declarationCount; ++i)
		{
			_writer.write(0x33u, 6);                  // 110011: one namespace attribute
			writeNamespaceAttribute(_declarations[i].first, _declarations[i].second);
		}
		_writer.write(0x3C0u, 10);                    // 1111 terminator, then 000000 up to the name
	}
	writeName(prefix, uri, localName, true, &_elementName);
	if (_attributeCount != 0)
	{
		for (std::size_t i = 0; i < _attributeCount; ++i)
		{
			const PendingAttribute& attribute = _pendingAttributes[i];
			_writer.write(false);
			writeAttribute(attribute.prefix, *attribute.pURI, *attribute.pLocalName, *attribute.pValue);
		}
		_writer.write(15u, 4);
	}
}


void FastInfosetWriter::writeAttribute(const std::string& prefix, const std::string& uri, const std::string& localName, const std::string& value)
{
	if (_writer.bitPos() != 1)
		throw FISEncodingException("Illegal startposition for a Attribute value");
	writeQualifiedNameOrIndex(prefix, uri, localName, false);
	if (value.empty() || !writeStringFast(value.data(), value.size(), DocumentVocabulary::ATTRIBUTE_VALUE, 0, 0))
		writeNonIdentifyingStringOrIndex(value, DocumentVocabulary::ATTRIBUTE_VALUE);
	poco_assert(_writer.bitPos() == 0);
}


void FastInfosetWriter::startPrefixMapping(const XMLString& prefix, const XMLString& uri)
{
	if (prefix != NamespaceSupport::XML_NAMESPACE_PREFIX) declarePrefix(prefix, uri);
}


void FastInfosetWriter::endPrefixMapping(const XMLString& prefix)
{
	if (prefix != NamespaceSupport::XML_NAMESPACE_PREFIX)
	{
		_namespaces.undeclarePrefix(prefix);
		++_namespaceGeneration;
	}
}


void FastInfosetWriter::skippedEntity(const XMLString&)
{
}


const std::string& FastInfosetWriter::prefixOf(const std::string& uri)
{
	// Nothing but a prefix declared with an empty namespace name maps to it:
	// without one, the empty namespace name has the empty prefix.
	if (uri.empty() && !_emptyURIMapped) return noPrefix();
	if (_prefixCacheGeneration != _namespaceGeneration || uri != _prefixCacheURI)
	{
		_prefixCacheURI = uri;
		_prefixCachePrefix = _namespaces.getPrefix(uri);
		_prefixCacheMapped = _namespaces.isMapped(uri);
		_prefixCacheGeneration = _namespaceGeneration;
	}
	return _prefixCachePrefix;
}


bool FastInfosetWriter::isMapped(const std::string& uri)
{
	if (uri.empty() && !_emptyURIMapped) return _namespaces.isMapped(uri);
	prefixOf(uri);
	return _prefixCacheMapped;
}


const std::string& FastInfosetWriter::mappedURI(const std::string& prefix)
{
	if (_uriCacheGeneration != _namespaceGeneration || prefix != _uriCachePrefix)
	{
		_uriCachePrefix = prefix;
		_uriCacheURI = _namespaces.getURI(prefix);
		_uriCacheGeneration = _namespaceGeneration;
	}
	return _uriCacheURI;
}


void FastInfosetWriter::declarePrefix(const std::string& prefix, const std::string& uri)
{
	_namespaces.declarePrefix(prefix, uri);
	if (!_contextDeclares.empty()) _contextDeclares.back() = true;
	if (uri.empty() && !prefix.empty()) _emptyURIMapped = true;
	++_namespaceGeneration;
}


void FastInfosetWriter::pushContext()
{
	_namespaces.pushContext();
	_contextDeclares.push_back(false);
}


void FastInfosetWriter::popContext()
{
	// More end events than start events must not pop the context that the
	// namespace support cannot do without.
	if (_contextDeclares.size() == 1) return;
	_namespaces.popContext();
	if (!_contextDeclares.empty())
	{
		if (_contextDeclares.back()) ++_namespaceGeneration;
		_contextDeclares.pop_back();
	}
	else ++_namespaceGeneration;
}


//
// Character data
//
void FastInfosetWriter::characters(const XMLChar ch[], int start, int length)
{
	// The host's buffers are not zero-terminated: the text ends at the
	// first zero inside the range, never beyond it.
	if (length <= 0)
	{
		writeText("", 0);
		return;
	}
	const char* pText = ch + start;
	std::size_t size = static_cast<std::size_t>(length);
	if (size <= 16)
	{
		// Short text, the common case, is scanned here rather than in a call.
		for (std::size_t i = 0; i < size; ++i)
		{
			if (pText[i] == 0)
			{
				size = i;
				break;
			}
		}
	}
	else if (const void* pZero = std::memchr(pText, 0, size))
	{
		size = static_cast<std::size_t>(static_cast<const char*>(pZero) - pText);
	}
	writeText(pText, size);
}


void FastInfosetWriter::characters(const std::string& text)
{
	writeText(text.data(), text.size());
}


void FastInfosetWriter::writeText(const char* text, std::size_t length)
{
	// An empty chunk cannot be written (its index 0 is not allowed where
	// chunks put their index); empty text is no text, so nothing goes out.
	if (_depth == 0)
	{
		if (length == 0) return;
		refuse("characters()");
	}
	if (!_pendingEncodings.empty()) handleEncodedData();
	if (length == 0) return;
	_writer.pad(false);
	if (writeStringFast(text, length, DocumentVocabulary::CONTENT_CHARACTER_CHUNK, 2, 2)) return;
	_writer.write(2u, 2);
	if (_writer.bitPos() != 2)
		throw FISEncodingException("Illegal startposition for a CharacterChunk value");
	writeNonIdentifyingStringOrIndex(text, length, DocumentVocabulary::CONTENT_CHARACTER_CHUNK);
}


bool FastInfosetWriter::writeStringFast(const char* data, std::size_t length, DocumentVocabulary::ID voc, unsigned int lead, int leadSize)
	/// A non-identifying string on an octet boundary after leadSize bits
	/// lead (the two bits of a chunk, or none for an attribute value), with
	/// all its leading bits in one write: the same bits as the general path,
	/// which takes what this does not (CDATA sections, lengths the encoder
	/// refuses).
{
	if (_states.back() == CDATA_SECTION) return false;
	const int pos = leadSize;
	UInt64 lengthBits = 0;
	int lengthSize = 0;
	if (!FastEncoding::stringLengthBits(pos + 4, length, lengthBits, lengthSize)) return false;
	bool addToTable = _maxIndexedStringLength >= 0 && length <= static_cast<std::size_t>(_maxIndexedStringLength);
	if (addToTable)
	{
		bool existed = false;
		const unsigned int index = indexOf(voc, data, length, existed);
		addToTable = index != Vocabulary<std::string>::NOT_FOUND;
		if (existed)
		{
			// 1 for an index, the index on the next bit.
			const unsigned long head = (static_cast<unsigned long>(lead) << 1) | 1;
			UInt32 bits = 0;
			int size = 0;
			if (FastEncoding::integerBits(pos + 1, index, bits, size))
			{
				_writer.write((head << size) | bits, leadSize + 1 + size);
			}
			else
			{
				_writer.write(head, leadSize + 1);
				Encoder::integer(_writer, index);
			}
			return true;
		}
	}
	// 0 for a literal, the add-to-table bit, 00 for UTF-8, the length, the
	// octets.
	const unsigned long head = (static_cast<unsigned long>(lead) << 4) | (addToTable ? 4ul : 0ul);
	_writer.write((head << lengthSize) | lengthBits, leadSize + 4 + lengthSize);
	_writer.write(data, length);
	return true;
}


void FastInfosetWriter::ignorableWhitespace(const XMLChar ch[], int start, int length)
{
	characters(ch, start, length);
}


void FastInfosetWriter::startCDATA()
{
	if (_states.back() == CDATA_SECTION) throw FISException("Cannot nest CDATA sections");
	if (_depth == 0) refuse("startCDATA()");
	pushState(CDATA_SECTION);
}


void FastInfosetWriter::endCDATA()
{
	if (_states.back() != CDATA_SECTION) throw FISException("endCDATA() without startCDATA()");
	if (!_pendingEncodings.empty()) handleEncodedData();
	popState();
}


void FastInfosetWriter::processingInstruction(const XMLString& target, const XMLString& data)
{
	if (_progress != BODY)
	{
		if (_progress != PROLOG) refuse("processingInstruction()", target);
		checkName(target, DocumentVocabulary::OTHER_NCNAME);
		_prolog.push_back(PrologItem{PrologItem::PI, target, data});
		return;
	}
	if (!_pendingEncodings.empty()) handleEncodedData();
	writePIItem(target, data);
}


void FastInfosetWriter::writePIItem(const std::string& target, const std::string& data)
{
	_writer.pad(false);
	_writer.write(0xE1u, 8);
	writeProcessingInstruction(target, data);
}


void FastInfosetWriter::writeProcessingInstruction(const std::string& target, const std::string& data)
{
	writeIdentifyingStringOrIndex(target, DocumentVocabulary::OTHER_NCNAME);
	writeNonIdentifyingStringOrIndex(data, DocumentVocabulary::OTHER_STRING);
}


void FastInfosetWriter::startFragment()
{
	throw FISException("startFragment() not allowed");
}


void FastInfosetWriter::endFragment()
{
	throw FISException("endFragment() not allowed");
}


//
// Typed data
//
void FastInfosetWriter::binaryData(const char* data, std::size_t length)
{
	// No octets make no value: the constructor refuses them.
	if (length == 0) insertEncoding(new DWordEncoding(data, length));
	appendValue<DWordEncoding>(2, data, length);
}


void FastInfosetWriter::encodedData(short value)
{
	appendValue<ShortEncoding>(3, value);
}


void FastInfosetWriter::encodedData(int value)
{
	appendValue<IntEncoding>(4, value);
}


void FastInfosetWriter::encodedData(long value)
{
	appendValue<LongEncoding>(5, value);
}


void FastInfosetWriter::encodedData(bool value)
{
	appendValue<BoolEncoding>(6, value);
}


void FastInfosetWriter::encodedData(float value)
{
	appendValue<FloatEncoding>(7, value);
}


void FastInfosetWriter::encodedData(double value)
{
	appendValue<DoubleEncoding>(8, value);
}


void FastInfosetWriter::encodedData(const Ixor::UUID& value)
{
	appendValue<UUIDEncoding>(9, value);
}


template <class E>
E* FastInfosetWriter::reusable(unsigned int type)
	/// The value of algorithm type that the last run of that algorithm
	/// used, emptied, when nothing holds it any more; else null.
{
	Ixor::AutoPtr<Encoding>& spare = _spareEncodings[type];
	if (!spare || spare->referenceCount() != 1) return 0;
	E* pValue = static_cast<E*>(spare.get());
	pValue->clear();
	return pValue;
}


template <class E, class... Values>
void FastInfosetWriter::appendValue(unsigned int type, const Values&... values)
	/// What insertEncoding() does with a new value of one element, without a
	/// new object for each: a value of the algorithm of the last pending one
	/// joins it, as merge() would; else the run starts with the reusable
	/// value of its algorithm, or with a new one that becomes reusable.
{
	if (_depth == 0) refuse(type == 2 ? "binaryData()" : "encodedData()");
	if (!_pendingEncodings.empty() && _pendingEncodings.back()->type() == type)
	{
		static_cast<E&>(*_pendingEncodings.back()).append(values...);
		return;
	}
	if (E* pValue = reusable<E>(type))
	{
		pValue->append(values...);
		_pendingEncodings.push_back(_spareEncodings[type]);
		return;
	}
	Ixor::AutoPtr<Encoding> pValue(new E(values...));
	_pendingEncodings.push_back(pValue);
	_spareEncodings[type] = pValue;
}


void FastInfosetWriter::insertEncoding(const Ixor::AutoPtr<Encoding>& value)
{
	if (_depth == 0) refuse("binaryData()");
	if (_pendingEncodings.empty() || !_pendingEncodings.back()->merge(*value))
		_pendingEncodings.push_back(value);
}


void FastInfosetWriter::handleEncodedData()
{
	if (_pendingEncodings.empty()) return;
	_writer.pad(false);
	for (Ixor::AutoPtr<Encoding>& value: _pendingEncodings)
	{
		_writer.write(2u, 2);
		if (value->type() == 10)
		{
			writeCharacterChunk(value->content());
		}
		else
		{
			writeNonIdentifyingStringOrIndex(value, DocumentVocabulary::CONTENT_CHARACTER_CHUNK);
		}
	}
	_pendingEncodings.clear();
}


//
// Names and strings
//
unsigned int FastInfosetWriter::writeIdentifyingStringOrIndex(const std::string& str, DocumentVocabulary::ID voc)
	/// The index of str, or NOT_FOUND when the table could not take it.
	/// Names are checked the first time they go out in full; repeats cost
	/// nothing.
{
	bool existed = false;
	const unsigned int index = indexOf(voc, str.data(), str.size(), existed);
	// A name that is refused has entered the table, but the document it
	// would have gone into is cut short anyway.
	if ((!existed || str.empty()) && (voc == DocumentVocabulary::PREFIX || voc == DocumentVocabulary::LOCAL_NAME || voc == DocumentVocabulary::OTHER_NCNAME))
		checkName(str, voc);
	// A table that cannot take the string gets no more entries: the reader,
	// which adds every identifying string written in full, only holds more.
	if (existed) writeIdentifyingStringIndex(index);
	else writeIdentifyingString(str, voc);
	return index;
}


void FastInfosetWriter::checkName(const std::string& name, DocumentVocabulary::ID voc) const
{
	if (voc == DocumentVocabulary::PREFIX)
	{
		if (!XMLTextRules::isNCName(name)) throw FISException("Not a namespace prefix", name);
	}
	else if (!XMLTextRules::isName(name)) throw FISException("Not an XML name", name);
}


void FastInfosetWriter::writeIdentifyingStringIndex(unsigned int index)
{
	if (_writer.bitPos() != 0)
		throw FISEncodingException("Illegal startposition for an writeIdentifyingStringIndex");
	_writer.write(true);
	Encoder::integer(_writer, index);
}


void FastInfosetWriter::writeIdentifyingString(const std::string& str, DocumentVocabulary::ID)
{
	if (_writer.bitPos() != 0)
		throw FISEncodingException("Illegal startposition for an writeIdentifyingString");
	_writer.write(false);
	Encoder::nonEmptyOctetString(_writer, str);
}


unsigned int FastInfosetWriter::writeNonIdentifyingStringOrIndex(const std::string& str, DocumentVocabulary::ID voc)
{
	return writeNonIdentifyingStringOrIndex(str.data(), str.size(), voc);
}


unsigned int FastInfosetWriter::writeNonIdentifyingStringOrIndex(const char* data, std::size_t length, DocumentVocabulary::ID voc)
{
	const int pos = _writer.bitPos();
	if (pos != 0 && pos != 2)
		throw FISEncodingException("Illegal startposition for a NonIdentifyingStringOrIndex value");
	bool addToTable = _maxIndexedStringLength >= 0 && length <= static_cast<std::size_t>(_maxIndexedStringLength);
	bool existed = false;
	unsigned int index = 0;
	if (addToTable) index = indexOf(voc, data, length, existed);
	// A table that cannot take the string: it goes out in full, not added.
	if (index == Vocabulary<std::string>::NOT_FOUND)
	{
		addToTable = false;
		index = 0;
	}
	_writer.write(existed);
	if (existed)
	{
		Encoder::integer(_writer, index);
	}
	else
	{
		_writer.write(addToTable);
		writeEncodedCharacterString(data, length, 0);
	}
	return index;
}


unsigned int FastInfosetWriter::writeNonIdentifyingStringOrIndex(Ixor::AutoPtr<Encoding>& value, DocumentVocabulary::ID voc)
{
	const int pos = _writer.bitPos();
	if (pos != 0 && pos != 2)
		throw FISEncodingException("Illegal startposition for a NonIdentifyingStringOrIndex value");
	const unsigned int type = value->type();
	const bool plainText = type == 0 || type == 10;
	bool addToTable = false;
	bool existed = false;
	unsigned int index = 0;
	if (plainText)
	{
		// Only plain and CDATA text can enter the table, so only their text
		// form is needed; typed values go out from their values.
		value->createContent();
		const std::string& text = value->content();
		addToTable = text.size() <= static_cast<std::size_t>(_maxIndexedStringLength) && _maxIndexedStringLength >= 0;
		if (addToTable) index = indexOf(voc, text.data(), text.size(), existed);
		if (index == Vocabulary<std::string>::NOT_FOUND)
		{
			addToTable = false;
			index = 0;
		}
	}
	_writer.write(existed);
	if (existed)
	{
		Encoder::integer(_writer, index);
	}
	else
	{
		_writer.write(addToTable);
		writeEncodedCharacterString(value);
	}
	return index;
}


void FastInfosetWriter::writeEncodedCharacterString(const std::string& str, unsigned int algorithm)
{
	writeEncodedCharacterString(str.data(), str.size(), algorithm);
}


void FastInfosetWriter::writeEncodedCharacterString(const char* data, std::size_t length, unsigned int algorithm)
{
	const int pos = _writer.bitPos();
	if (pos != 2 && pos != 4)
		throw FISEncodingException("Illegal startposition for a writeEncodedCharacterString");
	if (_states.back() == CDATA_SECTION)
	{
		_writer.write(3u, 2);
		Encoder::integer(_writer, 10);
		Encoder::nonEmptyOctetString(_writer, data, length);
	}
	else if (algorithm != 0 && algorithm != 10)
	{
		_writer.write(3u, 2);
		Encoder::integer(_writer, algorithm);
		_encodingAlgorithm.encode(algorithm, _writer, std::string(data, length));
	}
	else
	{
		_writer.write(0u, 2);
		Encoder::nonEmptyOctetString(_writer, data, length);
	}
}


void FastInfosetWriter::writeEncodedCharacterString(Ixor::AutoPtr<Encoding>& value)
{
	const int pos = _writer.bitPos();
	if (pos != 2 && pos != 4)
		throw FISEncodingException("Illegal startposition for a writeEncodedCharacterString");
	const unsigned int type = value->type();
	if (type != 0)
	{
		_writer.write(3u, 2);
		Encoder::integer(_writer, type);
		value->write(_writer);
	}
	else
	{
		_writer.write(0u, 2);
		Encoder::nonEmptyOctetString(_writer, value->content());
	}
}


unsigned int FastInfosetWriter::writeCharacterChunk(const std::string& str)
{
	if (_writer.bitPos() != 2)
		throw FISEncodingException("Illegal startposition for a CharacterChunk value");
	return writeNonIdentifyingStringOrIndex(str, DocumentVocabulary::CONTENT_CHARACTER_CHUNK);
}


unsigned int FastInfosetWriter::writeQualifiedNameOrIndex(const std::string& prefix, const std::string& namespaceURI, const std::string& localName, bool element)
{
	return writeName(prefix, namespaceURI, localName, element, 0);
}


unsigned int FastInfosetWriter::writeName(const std::string& prefix, const std::string& namespaceURI, const std::string& localName, bool element, StoredName* pStored)
	/// writeQualifiedNameOrIndex(); with pStored, also where the vocabulary
	/// holds the parts of the name. The result is NOT_FOUND for a name that
	/// its table could not take.
{
	const int pos = _writer.bitPos();
	if (pos != 1 && pos != 2)
		throw FISEncodingException("Illegal startposition for a writeQualifiedNameOrIndex value");
	poco_assert(!localName.empty());

	const unsigned int NOT_FOUND = Vocabulary<std::string>::NOT_FOUND;
	const unsigned int prefixIndex = cachedLookup(DocumentVocabulary::PREFIX, prefix, _lastPrefix);
	const unsigned int namespaceIndex = prefixIndex == NOT_FOUND ? NOT_FOUND : cachedLookup(DocumentVocabulary::NAMESPACE_NAME, namespaceURI, _lastNamespace);
	if (namespaceIndex != NOT_FOUND)
	{
		// Names repeat: a name found before is recognised by its local name
		// and the indexes of its prefix and namespace, without looking the
		// local name and the qualified name up in their tables again.
		// Remembered answers are dropped whenever the vocabulary gets new
		// tables; the table pointers guard against nothing more.
		const void* pNameTable = &getQNameVocabulary(element);
		const void* pLocalTable = viewOf(DocumentVocabulary::LOCAL_NAME).pTable;
		const UInt32 hash = VocabularyHash<std::string>::bytes(localName.data(), localName.size());
		NameCacheSlot& slot = _nameCache[element][(hash ^ (prefixIndex * 0x9E3779B1u) ^ (namespaceIndex * 0x85EBCA77u)) % NAME_CACHE_SIZE];
		unsigned int index = NOT_FOUND;
		if (slot.pNameTable == pNameTable && slot.pLocalTable == pLocalTable && slot.hash == hash
			&& slot.prefixIndex == prefixIndex && slot.namespaceIndex == namespaceIndex
			&& VocabularyHash<std::string>::equal(*slot.pLocalName, localName.data(), localName.size()))
		{
			index = slot.index;
		}
		else
		{
			const unsigned int localIndex = lookup(DocumentVocabulary::LOCAL_NAME, localName.data(), localName.size());
			if (localIndex != NOT_FOUND)
			{
				index = lookupName(QualifiedNameEntry(prefixIndex, namespaceIndex, localIndex), element);
				if (index != NOT_FOUND)
				{
					slot.pNameTable = pNameTable;
					slot.pLocalTable = pLocalTable;
					slot.pLocalName = &_vocabulary.value(DocumentVocabulary::LOCAL_NAME, localIndex);
					slot.hash = hash;
					slot.prefixIndex = prefixIndex;
					slot.namespaceIndex = namespaceIndex;
					slot.index = index;
				}
			}
		}
		if (index != NOT_FOUND)
		{
			writeInteger(index);
			poco_assert(_writer.bitPos() == 0);
			if (pStored)
			{
				// The last lookups were those of this name's prefix and namespace.
				pStored->pPrefix = _lastPrefix.pStored;
				pStored->pURI = _lastNamespace.pStored;
				pStored->pLocalName = slot.pLocalName;
			}
			return index;
		}
	}
	_writer.write(pos == 1 ? 0x1Eu : 0xFu, pos == 1 ? 5 : 4);   // 11110 for attributes, 1111 for elements
	unsigned int parts[3];
	const unsigned int index = writeLiteralName(prefix, namespaceURI, localName, element, parts);
	poco_assert(_writer.bitPos() == 0);
	if (pStored) storeParts(parts, *pStored);
	return index;
}


unsigned int FastInfosetWriter::writeQualifiedName(const std::string& prefix, const std::string& namespaceURI, const std::string& localName, bool element)
{
	unsigned int parts[3];
	return writeLiteralName(prefix, namespaceURI, localName, element, parts);
}


unsigned int FastInfosetWriter::writeLiteralName(const std::string& prefix, const std::string& namespaceURI, const std::string& localName, bool element, unsigned int parts[3])
	/// The literal name and, in parts, the indexes of its prefix, namespace
	/// name and local name (0 for an absent one, NOT_FOUND for one that
	/// its table could not take).
{
	poco_assert(!localName.empty());
	_writer.write(!prefix.empty());
	_writer.write(!namespaceURI.empty());
	parts[0] = prefix.empty() ? 0 : writeIdentifyingStringOrIndex(prefix, DocumentVocabulary::PREFIX);
	parts[1] = namespaceURI.empty() ? 0 : writeIdentifyingStringOrIndex(namespaceURI, DocumentVocabulary::NAMESPACE_NAME);
	parts[2] = writeIdentifyingStringOrIndex(localName, DocumentVocabulary::LOCAL_NAME);
	const unsigned int NOT_FOUND = Vocabulary<std::string>::NOT_FOUND;
	if (parts[0] != NOT_FOUND && parts[1] != NOT_FOUND && parts[2] != NOT_FOUND)
		return insertQualifiedName(QualifiedNameEntry(parts[0], parts[1], parts[2]), element);
	// The reader adds the name with the parts it added. A stand-in that no
	// lookup meets (no table gives out these ids) keeps this table in step
	// with the reader's, so that the names after it get the same indexes.
	Vocabulary<QualifiedNameEntry>& names = getQNameVocabulary(element);
	insertQualifiedName(QualifiedNameEntry(NOT_FOUND, NOT_FOUND - 1, static_cast<unsigned int>(names.size())), element);
	return NOT_FOUND;
}


unsigned int FastInfosetWriter::writeQualifiedName(const QualifiedNameEntry& name, bool element)
{
	return writeQualifiedName(_vocabulary.value(DocumentVocabulary::PREFIX, name.prefixId()),
		_vocabulary.value(DocumentVocabulary::NAMESPACE_NAME, name.namespaceId()),
		_vocabulary.value(DocumentVocabulary::LOCAL_NAME, name.localNameId()),
		element);
}


unsigned int FastInfosetWriter::insertQualifiedName(const QualifiedNameEntry& name, bool element)
	/// The index of the new name, or NOT_FOUND when its table is full or
	/// at the format's last index; such a table takes nothing more.
{
	const NameTableView& view = nameViewOf(element);
	bool qneExists = false;
	unsigned int index = Vocabulary<QualifiedNameEntry>::NOT_FOUND;
	if (view.pMap) index = const_cast<MapVocabulary<QualifiedNameEntry>*>(view.pMap)->indexWithin(name, Encoder::MAXINT20, qneExists);
	else if (view.pHash) index = const_cast<HashVocabulary<QualifiedNameEntry>*>(view.pHash)->indexWithin(name, Encoder::MAXINT20, qneExists);
	else if (view.pTable->size() <= Encoder::MAXINT20) index = getQNameVocabulary(element).index(name, qneExists);
	poco_assert(!qneExists);
	return index;
}


inline Vocabulary<QualifiedNameEntry>& FastInfosetWriter::getQNameVocabulary(bool element)
{
	return element ? *_vocabulary.elementVocabulary() : *_vocabulary.attributeVocabulary();
}


void FastInfosetWriter::writeNamespaceAttribute(const std::string& prefix, const std::string& namespaceURI)
{
	if (_writer.bitPos() != 6)
		throw FISEncodingException("Illegal startposition for a NamespaceAttribute value");
	_writer.write(!prefix.empty());
	_writer.write(!namespaceURI.empty());
	if (!prefix.empty()) writeIdentifyingStringOrIndex(prefix, DocumentVocabulary::PREFIX);
	if (!namespaceURI.empty()) writeIdentifyingStringOrIndex(namespaceURI, DocumentVocabulary::NAMESPACE_NAME);
}


FastInfoset_ALWAYS_INLINE void FastInfosetWriter::writeInteger(unsigned int value)
	/// Encoder::integer() with the common values in one write.
{
	UInt32 bits = 0;
	int size = 0;
	if (FastEncoding::integerBits(_writer.bitPos(), value, bits, size)) _writer.write(bits, size);
	else Encoder::integer(_writer, value);
}


FastInfoset_ALWAYS_INLINE void FastInfosetWriter::checkViews()
{
	if (_viewsRevision != _vocabulary.revision()) refreshViews();
}


void FastInfosetWriter::refreshViews()
	/// The vocabulary has new tables: every view and every remembered answer
	/// is dropped. Tables may take the places that freed ones had, so nothing
	/// found before may be trusted.
{
	for (StringTableView& view: _views) view = StringTableView();
	for (NameTableView& view: _nameViews) view = NameTableView();
	for (auto& slots: _nameCache)
	{
		for (NameCacheSlot& slot: slots) slot = NameCacheSlot();
	}
	_lastPrefix.pTable = 0;
	_lastNamespace.pTable = 0;
	_viewsRevision = _vocabulary.revision();
}


FastInfoset_ALWAYS_INLINE FastInfosetWriter::StringTableView& FastInfosetWriter::viewOf(DocumentVocabulary::ID id)
	/// The view of table id as its concrete kind.
{
	checkViews();
	StringTableView& view = _views[id];
	if (!view.pTable)
	{
		const Vocabulary<std::string>* pTable = _vocabulary.vocabulary(id);
		view.pTable = pTable;
		view.pMap = dynamic_cast<const MapVocabulary<std::string>*>(pTable);
		view.pHash = view.pMap ? 0 : dynamic_cast<const HashVocabulary<std::string>*>(pTable);
	}
	return view;
}


unsigned int FastInfosetWriter::lookup(DocumentVocabulary::ID id, const char* data, std::size_t length)
	/// The index of a string in table id, or NOT_FOUND; never adds.
{
	const StringTableView& view = viewOf(id);
	if (view.pMap) return view.pMap->find(data, length);
	if (view.pHash) return view.pHash->find(data, length);
	bool found = false;
	_text.assign(data, length);
	return view.pTable->exists(_text, found);
}


FastInfoset_ALWAYS_INLINE unsigned int FastInfosetWriter::cachedLookup(DocumentVocabulary::ID id, const std::string& value, LastLookup& last)
	/// lookup() that remembers its last answer; a table only grows, so an
	/// index found stays right as long as the table is the same. The empty
	/// string, the prefix and namespace name of most names, costs nothing.
{
	const Vocabulary<std::string>* pTable = viewOf(id).pTable;
	if (last.pTable == pTable && last.value.size() == value.size()
		&& (value.empty() || VocabularyHash<std::string>::equal(last.value, value.data(), value.size())))
	{
		return last.index;
	}
	const unsigned int index = lookup(id, value.data(), value.size());
	if (index != Vocabulary<std::string>::NOT_FOUND)
	{
		last.pTable = pTable;
		last.value = value;
		last.index = index;
		last.pStored = &pTable->index()[index];
	}
	return index;
}


unsigned int FastInfosetWriter::indexOf(DocumentVocabulary::ID id, const char* data, std::size_t length, bool& existed)
	/// The index of a string in table id, added when absent: one walk of the
	/// table, and the string is built only to be added. NOT_FOUND when the
	/// table cannot take it: a full hash table, or one at the format's last
	/// index; such a table takes nothing more.
{
	const StringTableView& view = viewOf(id);
	if (view.pMap) return const_cast<MapVocabulary<std::string>*>(view.pMap)->indexWithin(data, length, Encoder::MAXINT20, existed);
	if (view.pHash) return const_cast<HashVocabulary<std::string>*>(view.pHash)->indexWithin(data, length, Encoder::MAXINT20, existed);
	_text.assign(data, length);
	const unsigned int index = view.pTable->exists(_text, existed);
	if (existed || view.pTable->size() > Encoder::MAXINT20) return index;
	return _vocabulary.index(id, _text, existed);
}


void FastInfosetWriter::storeParts(const unsigned int parts[3], StoredName& stored)
	/// Where the tables hold the parts of a name written in full; an absent
	/// part is the empty string, which every table holds at index 0.
{
	const DocumentVocabulary::ID tables[3] = {DocumentVocabulary::PREFIX, DocumentVocabulary::NAMESPACE_NAME, DocumentVocabulary::LOCAL_NAME};
	const std::string* pParts[3];
	for (int i = 0; i < 3; ++i)
	{
		pParts[i] = parts[i] == Vocabulary<std::string>::NOT_FOUND ? 0 : &viewOf(tables[i]).pTable->index()[parts[i]];
	}
	stored.pPrefix = pParts[0];
	stored.pURI = pParts[1];
	stored.pLocalName = pParts[2];
}


FastInfosetWriter::NameTableView& FastInfosetWriter::nameViewOf(bool element)
	/// The view of a name table as its concrete kind.
{
	checkViews();
	NameTableView& view = _nameViews[element];
	if (!view.pTable)
	{
		const Vocabulary<QualifiedNameEntry>* pTable = &getQNameVocabulary(element);
		view.pTable = pTable;
		view.pMap = dynamic_cast<const MapVocabulary<QualifiedNameEntry>*>(pTable);
		view.pHash = view.pMap ? 0 : dynamic_cast<const HashVocabulary<QualifiedNameEntry>*>(pTable);
	}
	return view;
}


unsigned int FastInfosetWriter::lookupName(const QualifiedNameEntry& name, bool element)
{
	const NameTableView& view = nameViewOf(element);
	if (view.pMap) return view.pMap->find(name);
	if (view.pHash) return view.pHash->find(name);
	bool found = false;
	return view.pTable->exists(name, found);
}


std::string FastInfosetWriter::nameToString(const std::string& localName, const std::string& qname) const
{
	return qname.empty() ? localName : qname;
}


std::string FastInfosetWriter::newPrefix()
{
	std::string prefix("ns");
	Ixor::NumberFormatter::append(prefix, ++_prefixCounter);
	return prefix;
}


void FastInfosetWriter::setMaxIndexedStringLength(int length)
{
	_maxIndexedStringLength = length;
}


int FastInfosetWriter::getMaxIndexedStringLength() const
{
	return _maxIndexedStringLength;
}


//
// Header, declarations and comments
//
void FastInfosetWriter::writeHeader()
{
	Encoder::documentPreHeader(_writer, _writeXMLDeclaration);
	poco_assert(_writer.bitPos() == 1);

	const bool hasAdditionalData = false;
	const bool hasCharacterEncodingScheme = false;
	const bool standalone = false;
	const bool hasVersion = false;
	poco_assert(!hasAdditionalData);
	poco_assert(!hasCharacterEncodingScheme);
	poco_assert(!standalone);
	poco_assert(!hasVersion);

	const bool hasNotations = !_notations.empty();
	const bool hasUnparsedEntities = !_unparsedEntities.empty();
	const bool hasExternalVocabulary = !_externalVocabularyURI.empty();
	// Without an external vocabulary the difference to a fresh vocabulary
	// is what the application added beforehand. The fresh one is built with
	// map tables: the difference is the same and costs no hash slots.
	DocumentVocabulary initialVocabulary = hasExternalVocabulary
		? _vocabulary - _externalVocabulary
		: _vocabulary - DocumentVocabulary(DocumentVocabulary::VOC_MAP);
	bool hasInitialVocabulary = hasExternalVocabulary || !initialVocabulary.restrictedAlphabets().alphabets().empty()
		|| !initialVocabulary.elementVocabulary()->empty() || !initialVocabulary.attributeVocabulary()->empty();
	for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK && !hasInitialVocabulary; ++id)
	{
		hasInitialVocabulary = !initialVocabulary.vocabulary(static_cast<DocumentVocabulary::ID>(id))->empty();
	}

	_writer.write(hasAdditionalData);
	_writer.write(hasInitialVocabulary);
	_writer.write(hasNotations);
	_writer.write(hasUnparsedEntities);
	_writer.write(hasCharacterEncodingScheme);
	_writer.write(standalone);
	_writer.write(hasVersion);

	if (hasInitialVocabulary) writeInitialVocabulary(initialVocabulary);
	if (hasNotations) writeNotations(_notations);
	if (hasUnparsedEntities) writeUnparsedEntities(_unparsedEntities);
}


void FastInfosetWriter::writeInitialVocabulary(const DocumentVocabulary& vocabulary)
{
	typedef DocumentVocabulary DV;
	const DV::ID stringTables[] = {DV::PREFIX, DV::NAMESPACE_NAME, DV::LOCAL_NAME, DV::OTHER_NCNAME, DV::OTHER_URI};
	const DV::ID encodedTables[] = {DV::ATTRIBUTE_VALUE, DV::CONTENT_CHARACTER_CHUNK, DV::OTHER_STRING};

	const bool hasExternal = !_externalVocabularyURI.empty();
	const bool hasAlphabets = !vocabulary.restrictedAlphabets().alphabets().empty();
	_writer.write(0u, 3);
	_writer.write(hasExternal);
	_writer.write(hasAlphabets);
	_writer.write(false);                          // encoding algorithms are never written
	for (DV::ID id: stringTables) _writer.write(!vocabulary.vocabulary(id)->empty());
	for (DV::ID id: encodedTables) _writer.write(!vocabulary.vocabulary(id)->empty());
	_writer.write(!vocabulary.elementVocabulary()->empty());
	_writer.write(!vocabulary.attributeVocabulary()->empty());

	if (hasExternal) writeExternalVocabulary(_externalVocabularyURI);
	if (hasAlphabets) writeRestrictedAlphabet(vocabulary.restrictedAlphabets());
	for (DV::ID id: stringTables)
	{
		if (!vocabulary.vocabulary(id)->empty()) writeVocabulary(*vocabulary.vocabulary(id));
	}
	for (DV::ID id: encodedTables)
	{
		if (!vocabulary.vocabulary(id)->empty()) writeEncodedVocabulary(*vocabulary.vocabulary(id));
	}
	if (!vocabulary.elementVocabulary()->empty()) writeNameSurrogates(*vocabulary.elementVocabulary(), true);
	if (!vocabulary.attributeVocabulary()->empty()) writeNameSurrogates(*vocabulary.attributeVocabulary(), false);
}


void FastInfosetWriter::writeExternalVocabulary(const std::string& uri)
{
	_writer.write(false);
	Encoder::nonEmptyOctetString(_writer, uri);
}


void FastInfosetWriter::writeRestrictedAlphabet(const DocumentRestrictedAlphabet& alphabets)
{
	const unsigned int numEntries = static_cast<unsigned int>(alphabets.alphabets().size());
	poco_assert(numEntries > 0);
	Encoder::lengthOfSequence(_writer, numEntries);
	for (const RestrictedAlphabet& alphabet: alphabets.alphabets())
	{
		_writer.write(false);
		Encoder::nonEmptyOctetString(_writer, alphabet.characters());
	}
}


void FastInfosetWriter::writeVocabulary(const Vocabulary<std::string>& voc)
{
	const VerbTable<std::string>& index = voc.index();
	const unsigned int numEntries = static_cast<unsigned int>(voc.size());
	poco_assert(voc.size() == index.size());
	poco_assert(numEntries > 0);
	Encoder::lengthOfSequence(_writer, numEntries);
	for (std::size_t i = 0; i < index.size(); ++i)
	{
		_writer.write(false);
		Encoder::nonEmptyOctetString(_writer, index[i]);
	}
}


void FastInfosetWriter::writeEncodedVocabulary(const Vocabulary<std::string>& voc)
	/// Each entry as an encoded character string in UTF-8, after two
	/// padding bits.
{
	const VerbTable<std::string>& index = voc.index();
	const unsigned int numEntries = static_cast<unsigned int>(voc.size());
	poco_assert(voc.size() == index.size());
	poco_assert(numEntries > 0);
	Encoder::lengthOfSequence(_writer, numEntries);
	for (std::size_t i = 0; i < index.size(); ++i)
	{
		_writer.write(DocumentVocabulary::UTF8, 4);   // two padding bits, then the selector
		Encoder::nonEmptyOctetString(_writer, index[i]);
	}
}


void FastInfosetWriter::writeNameSurrogates(const Vocabulary<QualifiedNameEntry>& voc, bool)
	/// Each entry as its indexes into the prefix, namespace-name and
	/// local-name tables, after six padding bits. Index 0, and the all-ones
	/// index that a reader gives an absent part, mean no prefix or no
	/// namespace.
{
	const VerbTable<QualifiedNameEntry>& index = voc.index();
	const unsigned int numEntries = static_cast<unsigned int>(voc.size());
	poco_assert(voc.size() == index.size());
	poco_assert(numEntries > 0);
	Encoder::lengthOfSequence(_writer, numEntries);
	const unsigned int ABSENT = 0xFFFFFFFF;
	for (std::size_t i = 0; i < index.size(); ++i)
	{
		const QualifiedNameEntry& name = index[i];
		const bool hasPrefix = name.prefixId() != 0 && name.prefixId() != ABSENT;
		const bool hasNamespace = name.namespaceId() != 0 && name.namespaceId() != ABSENT;
		_writer.write((hasPrefix ? 2u : 0u) | (hasNamespace ? 1u : 0u), 8);   // six padding bits, then the two flags
		// A padding bit before each index; the index checks its range.
		if (hasPrefix)
		{
			_writer.write(false);
			Encoder::integer(_writer, name.prefixId());
		}
		if (hasNamespace)
		{
			_writer.write(false);
			Encoder::integer(_writer, name.namespaceId());
		}
		_writer.write(false);
		Encoder::integer(_writer, name.localNameId());
	}
}


void FastInfosetWriter::notationDecl(const XMLString& name, const XMLString* publicId, const XMLString* systemId)
{
	if (_progress != NOT_STARTED && _progress != PROLOG) refuse("notationDecl()", name);
	checkName(name, DocumentVocabulary::OTHER_NCNAME);
	_notations.push_back(Notation(name, publicId ? *publicId : XMLString(), systemId ? *systemId : XMLString()));
}


void FastInfosetWriter::unparsedEntityDecl(const XMLString& name, const XMLString* publicId, const XMLString& systemId, const XMLString& notationName)
{
	if (_progress != NOT_STARTED && _progress != PROLOG) refuse("unparsedEntityDecl()", name);
	checkName(name, DocumentVocabulary::OTHER_NCNAME);
	checkName(notationName, DocumentVocabulary::OTHER_NCNAME);
	_unparsedEntities.push_back(UnparsedEntity(name, publicId ? *publicId : XMLString(), systemId, notationName));
}


void FastInfosetWriter::writeNotations(const std::vector<Notation>& notations)
{
	poco_assert(!notations.empty());
	for (const Notation& notation: notations)
	{
		_writer.write(0x30u, 6);                  // 110000
		// A notation record keeps an absent identifier as an empty string;
		// an empty identifier is written as absent.
		writeNotation(notation.getName(),
			notation.getPublicId().empty() ? 0 : &notation.getPublicId(),
			notation.getSystemId().empty() ? 0 : &notation.getSystemId());
	}
	_writer.write(0xF0u, 8);
}


void FastInfosetWriter::writeNotation(const std::string& name, const std::string* publicId, const std::string* systemId)
{
	if (_writer.bitPos() != 6)
		throw FISEncodingException("Illegal startposition for a Notation value");
	_writer.write(systemId != 0);
	_writer.write(publicId != 0);
	writeIdentifyingStringOrIndex(name, DocumentVocabulary::OTHER_NCNAME);
	if (systemId) writeIdentifyingStringOrIndex(*systemId, DocumentVocabulary::OTHER_URI);
	if (publicId) writeIdentifyingStringOrIndex(*publicId, DocumentVocabulary::OTHER_URI);
}


void FastInfosetWriter::writeUnparsedEntities(const std::vector<UnparsedEntity>& unparsedEntities)
{
	poco_assert(!unparsedEntities.empty());
	for (const UnparsedEntity& entity: unparsedEntities)
	{
		_writer.write(0x68u, 7);                  // 1101000
		writeUnparsedEntity(entity.getName(),
			entity.getPublicId().empty() ? 0 : &entity.getPublicId(),
			entity.getSystemId(),
			entity.getNotationName());
	}
	_writer.write(0xF0u, 8);
}


void FastInfosetWriter::writeUnparsedEntity(const std::string& name, const std::string* publicId, const std::string& systemId, const std::string& notationName)
{
	if (_writer.bitPos() != 7)
		throw FISEncodingException("Illegal startposition for an UnparsedEntity value");
	_writer.write(publicId != 0);
	writeIdentifyingStringOrIndex(name, DocumentVocabulary::OTHER_NCNAME);
	writeIdentifyingStringOrIndex(systemId, DocumentVocabulary::OTHER_URI);
	if (publicId) writeIdentifyingStringOrIndex(*publicId, DocumentVocabulary::OTHER_URI);
	writeIdentifyingStringOrIndex(notationName, DocumentVocabulary::OTHER_NCNAME);
}


void FastInfosetWriter::startDTD(const XMLString&, const XMLString& publicId, const XMLString& systemId)
{
	if ((_progress != PROLOG && _progress != BODY) || _states.back() == DTD) refuse("startDTD()");
	if (_progress == PROLOG) _prolog.push_back(PrologItem{PrologItem::DTD_START, publicId, systemId});
	else if (!_pendingEncodings.empty()) handleEncodedData();
	pushState(DTD);
	if (_progress == BODY) writeDTDStart(publicId, systemId);
}


void FastInfosetWriter::writeDTDStart(const std::string& publicId, const std::string& systemId)
{
	_writer.pad(false);
	_writer.write(0x31u, 6);                      // 110001
	writeDocumentTypeDeclaration(publicId, systemId);
}


void FastInfosetWriter::writeDocumentTypeDeclaration(const std::string& publicId, const std::string& systemId)
{
	if (_writer.bitPos() != 6)
		throw FISEncodingException("Illegal startposition for a DocumentTypeDeclaration value");
	_writer.write(!systemId.empty());
	_writer.write(!publicId.empty());
	if (!systemId.empty()) writeIdentifyingStringOrIndex(systemId, DocumentVocabulary::OTHER_URI);
	if (!publicId.empty()) writeIdentifyingStringOrIndex(publicId, DocumentVocabulary::OTHER_URI);
}


void FastInfosetWriter::endDTD()
{
	if (_states.back() != DTD) throw FISException("endDTD() without startDTD()");
	popState();
	if (_progress == PROLOG) _prolog.push_back(PrologItem{PrologItem::DTD_END, std::string(), std::string()});
	else writeDTDEnd();
}


void FastInfosetWriter::writeDTDEnd()
{
	_writer.write(15u, 4);
	poco_assert(_writer.bitPos() == 4);
}


void FastInfosetWriter::startEntity(const XMLString&)
{
}


void FastInfosetWriter::endEntity(const XMLString&)
{
}


void FastInfosetWriter::comment(const XMLChar ch[], int start, int length)
{
	if (_states.back() == DTD) return;
	const std::size_t size = length > 0 ? static_cast<std::size_t>(length) : 0;
	if (_progress != BODY)
	{
		if (_progress != PROLOG) refuse("comment()");
		_prolog.push_back(PrologItem{PrologItem::COMMENT, std::string(ch + start, size), std::string()});
		return;
	}
	if (!_pendingEncodings.empty()) handleEncodedData();
	_text.assign(ch + start, size);
	writeCommentItem(_text);
}


void FastInfosetWriter::writeCommentItem(const std::string& text)
{
	_writer.pad(false);
	_writer.write(0xE2u, 8);
	writeComment(text);
}


void FastInfosetWriter::writeComment(const std::string& text)
{
	if (_writer.bitPos() != 0)
		throw FISEncodingException("Illegal startposition for a Comment value");
	writeNonIdentifyingStringOrIndex(text, DocumentVocabulary::OTHER_STRING);
}


void FastInfosetWriter::writeUnexpandedEntityReference(const std::string& name, const std::string* systemId, const std::string* publicId)
{
	if (_writer.bitPos() != 6)
		throw FISEncodingException("Illegal startposition for a UnexpandedEntityReference value");
	_writer.write(systemId != 0);
	_writer.write(publicId != 0);
	writeIdentifyingStringOrIndex(name, DocumentVocabulary::OTHER_NCNAME);
	if (systemId) writeIdentifyingStringOrIndex(*systemId, DocumentVocabulary::OTHER_URI);
	if (publicId) writeIdentifyingStringOrIndex(*publicId, DocumentVocabulary::OTHER_URI);
}


//
// Settings and state
//
void FastInfosetWriter::setDocumentVocabulary(const DocumentVocabulary& vocabulary)
{
	if (vocabulary.impl() == DocumentVocabulary::VOC_VECTOR) throw Ixor::InvalidArgumentException(VECTOR_REFUSED);
	_vocabulary = vocabulary;
}


DocumentVocabulary& FastInfosetWriter::getDocumentVocabulary()
{
	return _vocabulary;
}


const DocumentVocabulary& FastInfosetWriter::getDocumentVocabulary() const
{
	return _vocabulary;
}


void FastInfosetWriter::setWriteXMLDeclaration(bool write)
{
	_writeXMLDeclaration = write;
}


void FastInfosetWriter::setExternalVocabulary(const std::string& uri, const DocumentVocabulary& vocabulary)
{
	// Vector tables find a value by walking through it: the difference the
	// header takes would cost the square of their size. Map tables take any
	// number of entries.
	if (vocabulary.impl() == DocumentVocabulary::VOC_VECTOR)
	{
		setExternalVocabulary(uri, VocabularyDocument::withTables(vocabulary, DocumentVocabulary::VOC_MAP));
		return;
	}
	_externalVocabularyURI = uri;
	_externalVocabulary = vocabulary;
	// The reader starts the document from the external vocabulary, so the
	// writer must too: indexes of its own would name other entries there.
	if (!VocabularyDocument::startsWith(_vocabulary, vocabulary)) _vocabulary = vocabulary;
	// Strings are looked up only up to the indexed length: the vocabulary's
	// longer ones would never be found.
	for (DocumentVocabulary::ID id: {DocumentVocabulary::ATTRIBUTE_VALUE, DocumentVocabulary::OTHER_STRING, DocumentVocabulary::CONTENT_CHARACTER_CHUNK})
	{
		const VerbTable<std::string>& entries = vocabulary.vocabulary(id)->index();
		for (std::size_t i = 0; i < entries.size(); ++i)
		{
			if (entries[i].size() > static_cast<std::size_t>(std::max(_maxIndexedStringLength, 0)))
				_maxIndexedStringLength = static_cast<int>(std::min<std::size_t>(entries[i].size(), INT_MAX));
		}
	}
}


void FastInfosetWriter::pushState(State state)
{
	_states.push_back(state);
}


void FastInfosetWriter::popState()
{
	// More end events than start events must not empty the stack, whose
	// top the CDATA and DTD tests read.
	if (_states.size() > 1) _states.pop_back();
}


} } // namespace Ixor::FastInfoset
