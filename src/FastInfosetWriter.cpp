#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/BoolEncoding.h"
#include "Ixor/FastInfoset/DWordEncoding.h"
#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/FloatEncoding.h"
#include "Ixor/FastInfoset/IntEncoding.h"
#include "Ixor/FastInfoset/LongEncoding.h"
#include "Ixor/FastInfoset/ShortEncoding.h"
#include "Ixor/FastInfoset/UUIDEncoding.h"
#include "Ixor/FastInfoset/VerbTable.h"
#include "Ixor/FastInfoset/VocabularyDocument.h"
#include "AlgorithmTable.h"
#include "DeferredProlog.h"
#include "HeaderWriter.h"
#include "ItemWriter.h"
#include "NamespaceTracker.h"
#include "OpenElements.h"
#include "PendingElement.h"
#include "PendingValues.h"
#include "WriterTables.h"
#include "Poco/SAX/AttributesImpl.h"
#include "Poco/SAX/NamespaceSupport.h"
#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>


using Ixor::XML::XMLString;
using Ixor::XML::XMLChar;
using Ixor::XML::Attributes;


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

	const char* const VECTOR_REFUSED = "A DocumentVocabulary with VOC_VECTOR implementation cannot be used by FastInfosetWriter";

	enum State
		/// What the innermost open construct is.
	{
		UNINITIALIZED,
		DOCUMENT,
		ELEMENT,
		CDATA_SECTION,
		DTD
	};

	enum Progress
		/// Where the writer stands in its one document.
	{
		NOT_STARTED,
		PROLOG,        // started; the header waits for the root element
		BODY,          // the header is written
		ENDED
	};
}


// A class nested in an exported one is exported with it: the writer's state
// is the library's own, and its types stay out of the exported symbols.
#if defined(__GNUC__) || defined(__clang__)
	#define FastInfoset_HIDDEN __attribute__ ((visibility ("hidden")))
#else
	#define FastInfoset_HIDDEN
#endif


class FastInfoset_HIDDEN FastInfosetWriter::Impl
	/// The writer's state: its output and vocabulary, and the parts that
	/// follow the document (each class says what it keeps). The event logic
	/// is FastInfosetWriter's; what it shares lives here.
{
public:
	Impl(std::ostream& out, bool writeXMLDeclaration, DocumentVocabulary::VocabularyImpl impl);
	Impl(std::ostream& out, bool writeXMLDeclaration, const DocumentVocabulary& vocabulary);

	void startBody(const char* event);
	void writeProlog();
	[[noreturn]] void refuse(const char* event, const std::string& name = std::string()) const;
	void writeText(const char* text, std::size_t length);
	void flushValues();
	template <class E, class... Parts>
	void appendValue(unsigned int type, const Parts&... parts);
	void pushState(State state);
	void popState();
	void restart(std::ostream& out);

	BitStreamWriter    bits;
	bool               writeXMLDeclaration;
	DocumentVocabulary vocabulary;
	DocumentVocabulary externalVocabulary;
	std::string        externalVocabularyURI;
	WriterTables       tables;
	ItemWriter         items;
	NamespaceTracker   namespaces;
	PendingElement     element;
	OpenElements       openElements;
	PendingValues      values;
	DeferredProlog     prolog;
	std::vector<State> states;
	Progress           progress;
	bool               rootStarted;
	std::string        text;   // scratch
	WriterTables::Sizes startSizes;   // of the tables when the document started
	UInt64             startRevision;   // of the vocabulary then
	std::unique_ptr<DocumentVocabulary> pStartVocabulary;   // a copy of them, for tables that cannot forget entries

private:
	void init();
};


FastInfosetWriter::Impl::Impl(std::ostream& out, bool xmlDeclaration, DocumentVocabulary::VocabularyImpl impl):
	bits(out, false),
	writeXMLDeclaration(xmlDeclaration),
	vocabulary(impl),
	// The external vocabulary has no tables until one is set: an empty
	// hash vocabulary would cost a megabyte of slots for nothing.
	externalVocabulary(DontInitialize()),
	tables(vocabulary),
	items(bits, tables)
{
	init();
}


FastInfosetWriter::Impl::Impl(std::ostream& out, bool xmlDeclaration, const DocumentVocabulary& initial):
	bits(out, false),
	writeXMLDeclaration(xmlDeclaration),
	vocabulary(initial),
	externalVocabulary(DontInitialize()),
	tables(vocabulary),
	items(bits, tables)
{
	init();
}


void FastInfosetWriter::Impl::init()
{
	states.assign(1, UNINITIALIZED);
	progress = NOT_STARTED;
	rootStarted = false;
}


void FastInfosetWriter::Impl::startBody(const char* event)
	/// What an element at the document's level needs: a started document, no
	/// open document type declaration, no root element before, and the
	/// header and the prolog written.
{
	if (progress != PROLOG && progress != BODY) refuse(event);
	if (states.back() != DOCUMENT || rootStarted) refuse(event);
	if (progress == PROLOG) writeProlog();
}


void FastInfosetWriter::Impl::writeProlog()
	/// The header, then what came before the root element, in its order:
	/// the prolog's strings enter the vocabulary only after the header has
	/// taken its initial vocabulary from it.
{
	HeaderWriter(bits, items).write(writeXMLDeclaration, vocabulary, externalVocabularyURI, externalVocabulary, prolog);
	progress = BODY;
	for (std::size_t i = 0; i < prolog.itemCount(); ++i)
	{
		const DeferredProlog::Item& item = prolog.item(i);
		switch (item.kind)
		{
		case DeferredProlog::Item::PROCESSING_INSTRUCTION: items.processingInstruction(item.first, item.second); break;
		case DeferredProlog::Item::COMMENT:                items.comment(item.first); break;
		case DeferredProlog::Item::DTD_START:              items.documentTypeDeclaration(item.first, item.second); break;
		case DeferredProlog::Item::DTD_END:                items.documentTypeDeclarationEnd(); break;
		}
	}
	prolog.clearItems();
}


void FastInfosetWriter::Impl::refuse(const char* event, const std::string& name) const
	/// Throws the FISException that says why event makes no document here.
{
	std::string message(event);
	const State top = states.back();
	if (progress == NOT_STARTED) message += " before startDocument()";
	else if (progress == ENDED) message += " after endDocument(): a writer writes one document";
	else if (top == DTD) message += " inside the document type declaration";
	else if (top == CDATA_SECTION) message += " inside a CDATA section";
	else if (openElements.depth() != 0)
	{
		message += openElements.topKnown(vocabulary.revision()) ? " with the element " + openElements.topName() + " open" : " inside an element";
	}
	else if (rootStarted) message += " after the root element";
	else message += " outside the root element";
	if (name.empty()) throw FISException(message);
	throw FISException(message, name);
}


void FastInfosetWriter::Impl::writeText(const char* text, std::size_t length)
{
	// An empty chunk cannot be written (its index 0 is not allowed where
	// chunks put their index); empty text is no text, so nothing goes out.
	if (openElements.depth() == 0)
	{
		if (length == 0) return;
		refuse("characters()");
	}
	if (!values.empty()) flushValues();
	if (length == 0) return;
	items.characterChunk(text, length);
}


void FastInfosetWriter::Impl::flushValues()
{
	items.typedChunks(values.runs());
	values.clear();
}


template <class E, class... Parts>
void FastInfosetWriter::Impl::appendValue(unsigned int type, const Parts&... parts)
	/// A typed value of algorithm type and class E, made of parts.
{
	if (openElements.depth() == 0) refuse(type == AlgorithmTable::BASE64 ? "binaryData()" : "encodedData()");
	values.append<E>(type, parts...);
}


void FastInfosetWriter::Impl::restart(std::ostream& out)
	/// Everything as it was before the last document started, on out.
{
	if (progress != NOT_STARTED)
	{
		if (pStartVocabulary)
		{
			vocabulary = *pStartVocabulary;
			pStartVocabulary.reset();
		}
		else if (vocabulary.revision() == startRevision)
		{
			// A vocabulary set during the document is kept as it is.
			tables.truncate(startSizes);
		}
	}
	bits.restart(out);
	openElements.clear();
	values.clear();
	prolog.clear();
	states.resize(1);
	items.setInCDATA(false);
	init();
}


inline void FastInfosetWriter::Impl::pushState(State state)
{
	states.push_back(state);
	items.setInCDATA(state == CDATA_SECTION);
}


inline void FastInfosetWriter::Impl::popState()
{
	// More end events than start events must not empty the stack, whose
	// top the CDATA and DTD tests read.
	if (states.size() > 1) states.pop_back();
	items.setInCDATA(states.back() == CDATA_SECTION);
}


//
// Construction
//
FastInfosetWriter::FastInfosetWriter(std::ostream& out):
	_pImpl(new Impl(out, false, DocumentVocabulary::VOC_HASH))
{
}


FastInfosetWriter::FastInfosetWriter(std::ostream& out, bool writeXMLDeclaration, DocumentVocabulary::VocabularyImpl impl):
	_pImpl(new Impl(out, writeXMLDeclaration, impl))
{
}


FastInfosetWriter::FastInfosetWriter(std::ostream& out, bool writeXMLDeclaration, const DocumentVocabulary& vocabulary):
	_pImpl(new Impl(out, writeXMLDeclaration, vocabulary))
{
}


FastInfosetWriter::~FastInfosetWriter()
{
}


void FastInfosetWriter::reset(std::ostream& out)
{
	_pImpl->restart(out);
}


//
// Document and elements
//
void FastInfosetWriter::setDocumentLocator(const Ixor::XML::Locator*)
{
}


void FastInfosetWriter::startDocument()
{
	Impl& w = *_pImpl;
	if (w.progress == ENDED) w.refuse("startDocument()");
	if (w.progress != NOT_STARTED) throw FISException("startDocument() inside a document");
	// What restart() returns to.
	w.startRevision = w.vocabulary.revision();
	if (w.tables.canTruncate()) w.startSizes = w.tables.sizes();
	else w.pStartVocabulary.reset(new DocumentVocabulary(w.vocabulary));
	w.pushState(DOCUMENT);
	w.namespaces.startDocument();
	w.progress = PROLOG;
}


void FastInfosetWriter::endDocument()
{
	Impl& w = *_pImpl;
	if (w.progress != BODY && w.progress != PROLOG) w.refuse("endDocument()");
	if (w.states.back() != DOCUMENT) w.refuse("endDocument()");
	if (w.progress == PROLOG) w.writeProlog();
	if (!w.values.empty()) w.flushValues();
	w.items.terminator();
	w.bits.complete();
	w.popState();
	w.progress = ENDED;
}


void FastInfosetWriter::startElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Attributes& attributes)
{
	Impl& w = *_pImpl;
	if (w.openElements.depth() == 0) w.startBody("startElement()");
	if (!w.values.empty()) w.flushValues();
	const std::string& name = w.element.gather(uri, localName, qname, attributes, w.namespaces);
	// The element's own context opens only now: its declarations were made
	// in the context current at its start event, where startPrefixMapping
	// declares too.
	w.namespaces.pushContext();
	// Everything is checked: the element goes out.
	WriterTables::StoredName stored;
	w.items.element(w.element, uri, name, stored);
	w.pushState(ELEMENT);
	w.rootStarted = true;
	w.openElements.push(stored, w.vocabulary.revision(), w.element.prefix(), uri, name);
}


void FastInfosetWriter::endElement(const XMLString& uri, const XMLString& localName, const XMLString& qname)
{
	Impl& w = *_pImpl;
	if (w.states.back() != ELEMENT) w.refuse("endElement()", qname.empty() ? localName : qname);
	if (!w.openElements.topMatches(uri, localName, qname, w.vocabulary.revision()))
	{
		const std::string endName = !qname.empty() ? qname : uri.empty() ? localName : "{" + uri + "}" + localName;
		throw FISException("Mismatched end tag", endName + " ends " + w.openElements.topName());
	}
	if (!w.values.empty()) w.flushValues();
	w.items.terminator();
	w.popState();
	w.namespaces.popContext();
	w.openElements.pop();
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


void FastInfosetWriter::startPrefixMapping(const XMLString& prefix, const XMLString& uri)
{
	if (prefix != Ixor::XML::NamespaceSupport::XML_NAMESPACE_PREFIX) _pImpl->namespaces.declarePrefix(prefix, uri);
}


void FastInfosetWriter::endPrefixMapping(const XMLString& prefix)
{
	if (prefix != Ixor::XML::NamespaceSupport::XML_NAMESPACE_PREFIX) _pImpl->namespaces.undeclarePrefix(prefix);
}


void FastInfosetWriter::skippedEntity(const XMLString&)
{
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
		_pImpl->writeText("", 0);
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
	_pImpl->writeText(pText, size);
}


void FastInfosetWriter::characters(const std::string& text)
{
	_pImpl->writeText(text.data(), text.size());
}


void FastInfosetWriter::ignorableWhitespace(const XMLChar ch[], int start, int length)
{
	characters(ch, start, length);
}


void FastInfosetWriter::startCDATA()
{
	Impl& w = *_pImpl;
	if (w.states.back() == CDATA_SECTION) throw FISException("Cannot nest CDATA sections");
	if (w.openElements.depth() == 0) w.refuse("startCDATA()");
	w.pushState(CDATA_SECTION);
}


void FastInfosetWriter::endCDATA()
{
	Impl& w = *_pImpl;
	if (w.states.back() != CDATA_SECTION) throw FISException("endCDATA() without startCDATA()");
	if (!w.values.empty()) w.flushValues();
	w.popState();
}


void FastInfosetWriter::processingInstruction(const XMLString& target, const XMLString& data)
{
	Impl& w = *_pImpl;
	if (w.progress != BODY)
	{
		if (w.progress != PROLOG) w.refuse("processingInstruction()", target);
		ItemWriter::checkName(target, DocumentVocabulary::OTHER_NCNAME);
		w.prolog.addProcessingInstruction(target, data);
		return;
	}
	if (!w.values.empty()) w.flushValues();
	w.items.processingInstruction(target, data);
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
	if (length == 0) Ixor::AutoPtr<Encoding> refused(new DWordEncoding(data, length));
	_pImpl->appendValue<DWordEncoding>(AlgorithmTable::BASE64, data, length);
}


void FastInfosetWriter::encodedData(short value)
{
	_pImpl->appendValue<ShortEncoding>(AlgorithmTable::SHORT, value);
}


void FastInfosetWriter::encodedData(int value)
{
	_pImpl->appendValue<IntEncoding>(AlgorithmTable::INT, value);
}


void FastInfosetWriter::encodedData(long value)
{
	_pImpl->appendValue<LongEncoding>(AlgorithmTable::LONG, value);
}


void FastInfosetWriter::encodedData(bool value)
{
	_pImpl->appendValue<BoolEncoding>(AlgorithmTable::BOOLEAN, value);
}


void FastInfosetWriter::encodedData(float value)
{
	_pImpl->appendValue<FloatEncoding>(AlgorithmTable::FLOAT, value);
}


void FastInfosetWriter::encodedData(double value)
{
	_pImpl->appendValue<DoubleEncoding>(AlgorithmTable::DOUBLE, value);
}


void FastInfosetWriter::encodedData(const Ixor::UUID& value)
{
	_pImpl->appendValue<UUIDEncoding>(AlgorithmTable::UUID, value);
}


//
// Declarations and comments
//
void FastInfosetWriter::notationDecl(const XMLString& name, const XMLString* publicId, const XMLString* systemId)
{
	Impl& w = *_pImpl;
	if (w.progress != NOT_STARTED && w.progress != PROLOG) w.refuse("notationDecl()", name);
	ItemWriter::checkName(name, DocumentVocabulary::OTHER_NCNAME);
	w.prolog.addNotation(name, publicId, systemId);
}


void FastInfosetWriter::unparsedEntityDecl(const XMLString& name, const XMLString* publicId, const XMLString& systemId, const XMLString& notationName)
{
	Impl& w = *_pImpl;
	if (w.progress != NOT_STARTED && w.progress != PROLOG) w.refuse("unparsedEntityDecl()", name);
	ItemWriter::checkName(name, DocumentVocabulary::OTHER_NCNAME);
	ItemWriter::checkName(notationName, DocumentVocabulary::OTHER_NCNAME);
	w.prolog.addUnparsedEntity(name, publicId, systemId, notationName);
}


void FastInfosetWriter::startDTD(const XMLString&, const XMLString& publicId, const XMLString& systemId)
{
	Impl& w = *_pImpl;
	if ((w.progress != PROLOG && w.progress != BODY) || w.states.back() == DTD) w.refuse("startDTD()");
	if (w.progress == PROLOG) w.prolog.addDTDStart(publicId, systemId);
	else if (!w.values.empty()) w.flushValues();
	w.pushState(DTD);
	if (w.progress == BODY) w.items.documentTypeDeclaration(publicId, systemId);
}


void FastInfosetWriter::endDTD()
{
	Impl& w = *_pImpl;
	if (w.states.back() != DTD) throw FISException("endDTD() without startDTD()");
	w.popState();
	if (w.progress == PROLOG) w.prolog.addDTDEnd();
	else w.items.documentTypeDeclarationEnd();
}


void FastInfosetWriter::startEntity(const XMLString&)
{
}


void FastInfosetWriter::endEntity(const XMLString&)
{
}


void FastInfosetWriter::comment(const XMLChar ch[], int start, int length)
{
	Impl& w = *_pImpl;
	if (w.states.back() == DTD) return;
	const std::size_t size = length > 0 ? static_cast<std::size_t>(length) : 0;
	if (w.progress != BODY)
	{
		if (w.progress != PROLOG) w.refuse("comment()");
		w.prolog.addComment(ch + start, size);
		return;
	}
	if (!w.values.empty()) w.flushValues();
	w.text.assign(ch + start, size);
	w.items.comment(w.text);
}


//
// Settings
//
void FastInfosetWriter::setDocumentVocabulary(const DocumentVocabulary& vocabulary)
{
	if (vocabulary.impl() == DocumentVocabulary::VOC_VECTOR) throw Ixor::InvalidArgumentException(VECTOR_REFUSED);
	_pImpl->vocabulary = vocabulary;
}


DocumentVocabulary& FastInfosetWriter::getDocumentVocabulary()
{
	return _pImpl->vocabulary;
}


const DocumentVocabulary& FastInfosetWriter::getDocumentVocabulary() const
{
	return _pImpl->vocabulary;
}


void FastInfosetWriter::setWriteXMLDeclaration(bool write)
{
	_pImpl->writeXMLDeclaration = write;
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
	Impl& w = *_pImpl;
	w.externalVocabularyURI = uri;
	w.externalVocabulary = vocabulary;
	// The reader starts the document from the external vocabulary, so the
	// writer must too: indexes of its own would name other entries there.
	if (!VocabularyDocument::startsWith(w.vocabulary, vocabulary)) w.vocabulary = vocabulary;
	// Strings are looked up only up to the indexed length: the vocabulary's
	// longer ones would never be found.
	int maxLength = w.items.maxIndexedStringLength();
	for (DocumentVocabulary::ID id: {DocumentVocabulary::ATTRIBUTE_VALUE, DocumentVocabulary::OTHER_STRING, DocumentVocabulary::CONTENT_CHARACTER_CHUNK})
	{
		const VerbTable<std::string>& entries = vocabulary.vocabulary(id)->index();
		for (std::size_t i = 0; i < entries.size(); ++i)
		{
			if (entries[i].size() > static_cast<std::size_t>(std::max(maxLength, 0)))
				maxLength = static_cast<int>(std::min<std::size_t>(entries[i].size(), INT_MAX));
		}
	}
	w.items.setMaxIndexedStringLength(maxLength);
}


void FastInfosetWriter::setMaxIndexedStringLength(int length)
{
	_pImpl->items.setMaxIndexedStringLength(length);
}


int FastInfosetWriter::getMaxIndexedStringLength() const
{
	return _pImpl->items.maxIndexedStringLength();
}


} } // namespace Ixor::FastInfoset
