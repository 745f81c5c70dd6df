#include "WellFormedAdapter.h"
#include "XMLTextRules.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/String.h"
#include "Poco/XML/XMLWriter.h"
#include <algorithm>
#include <cstring>


using Ixor::XML::XMLChar;
using Ixor::XML::XMLString;


namespace Ixor {
namespace FastInfoset {


namespace
{
	const std::string XMLNS("xmlns");
	const std::string XML_PREFIX("xml");
	const std::string CARRIAGE_RETURN("&#xD;");
	const std::size_t FEW_ATTRIBUTES = 16;   // compared pairwise; more are sorted
	const std::size_t SHOWN_OCTETS = 64;     // enough for a message, which cuts shorter


	[[noreturn]] void fault(const std::string& what)
	{
		throw FISException("Cannot be written as well-formed XML", what);
	}


	void checkText(const char* what, const char* text, std::size_t length)
	{
		const std::size_t at = XMLTextRules::invalidCharacter(text, length);
		if (at != XMLTextRules::ALL_VALID)
			fault(std::string(what) + " holds a character XML does not allow: " + XMLTextRules::shown(std::string(text + at, std::min(length - at, SHOWN_OCTETS))));
	}


	void checkText(const char* what, const std::string& text)
	{
		checkText(what, text.data(), text.size());
	}


	std::size_t textLength(int length)
		/// The parser never reports a negative length. A zero octet is a
		/// character like any other here, and XML refuses it.
	{
		return length > 0 ? static_cast<std::size_t>(length) : 0;
	}
}


WellFormedAdapter::WellFormedAdapter(Ixor::XML::XMLWriter& writer):
	_writer(writer),
	_haveDoctype(false),
	_inDoctype(false),
	_rootStarted(false),
	_rootEnded(false),
	_inCDATA(false),
	_cdataBrackets(0),
	_depth(0),
	_pendingStart(0)
{
}


WellFormedAdapter::~WellFormedAdapter()
{
}


void WellFormedAdapter::setDocumentLocator(const Ixor::XML::Locator* pLocator)
{
	_writer.setDocumentLocator(pLocator);
}


void WellFormedAdapter::startDocument()
{
	_writer.startDocument();
}


void WellFormedAdapter::endDocument()
{
	if (!_rootStarted) fault("the document has no root element");
	writeProlog();
	_writer.endDocument();
}


void WellFormedAdapter::startElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Ixor::XML::Attributes& attributes)
{
	checkElement(uri, localName, qname, attributes);
	if (!_rootStarted)
	{
		_rootStarted = true;
		// The parser may report an unprefixed element with an empty
		// qualified name: its local name is then the name.
		if (_haveDoctype || !_notations.empty() || !_unparsedEntities.empty())
			writeDoctype(qname.empty() ? localName : qname);
		writeProlog();
	}
	_declaredSizes.push_back(_pendingStart);
	_pendingStart = _declared.size();
	++_depth;
	_writer.startElement(uri, localName, qname, attributes);
}


void WellFormedAdapter::endElement(const XMLString& uri, const XMLString& localName, const XMLString& qname)
{
	_writer.endElement(uri, localName, qname);
	if (_declaredSizes.empty()) return;   // no open element: the writer refuses that itself
	_declared.resize(_declaredSizes.back());
	_declaredSizes.pop_back();
	_pendingStart = _declared.size();
	if (--_depth == 0) _rootEnded = true;
}


void WellFormedAdapter::characters(const XMLChar ch[], int start, int length)
{
	const char* const text = ch + start;
	const std::size_t size = textLength(length);
	if (_depth == 0) fault("the document has text outside the root element");
	checkText("text", text, size);
	if (_inCDATA) writeCDATAText(text, size);
	else writeText(text, size);
}


void WellFormedAdapter::ignorableWhitespace(const XMLChar ch[], int start, int length)
{
	characters(ch, start, length);
}


void WellFormedAdapter::processingInstruction(const XMLString& target, const XMLString& data)
{
	if (!XMLTextRules::isName(target))
		fault("processing-instruction target " + XMLTextRules::shown(target) + " is not an XML name");
	if (Poco::icompare(target, XML_PREFIX) == 0)
		fault("processing-instruction target " + XMLTextRules::shown(target) + " is reserved for the XML declaration");
	checkText("a processing instruction", data);
	if (data.find("?>") != std::string::npos)
		fault("processing-instruction data contains \"?>\": " + XMLTextRules::shown(data));
	// One from inside the declaration goes out now, ahead of it: the writer
	// cannot print an internal subset around it. One after it waits with it.
	if (holding())
	{
		_prolog.push_back(PrologEvent{false, target, data});
		return;
	}
	_writer.processingInstruction(target, data);
}


void WellFormedAdapter::startPrefixMapping(const XMLString& prefix, const XMLString& uri)
{
	if (!prefix.empty() && !XMLTextRules::isNCName(prefix))
		fault("prefix " + XMLTextRules::shown(prefix) + " is not an XML name");
	if (prefix == XMLNS)
		fault("the prefix \"xmlns\" cannot be declared");
	if ((prefix == XML_PREFIX) != (uri == XMLTextRules::XML_NAMESPACE))
		fault("only the prefix \"xml\" names the XML namespace, and it names no other");
	if (uri == XMLTextRules::XMLNS_NAMESPACE)
		fault("the namespace " + XMLTextRules::shown(uri) + " cannot be declared");
	if (!prefix.empty() && uri.empty())
		fault("prefix " + XMLTextRules::shown(prefix) + " is declared without namespace");
	checkText("a namespace name", uri);
	for (std::size_t i = _pendingStart; i < _declared.size(); ++i)
	{
		if (_declared[i].first == prefix) fault("prefix " + XMLTextRules::shown(prefix) + " is declared twice on one element");
	}
	_declared.push_back(Binding(prefix, uri));
	_writer.startPrefixMapping(prefix, uri);
}


void WellFormedAdapter::endPrefixMapping(const XMLString& prefix)
{
	_writer.endPrefixMapping(prefix);
}


void WellFormedAdapter::skippedEntity(const XMLString& name)
{
	_writer.skippedEntity(name);
}


void WellFormedAdapter::startDTD(const XMLString&, const XMLString& publicId, const XMLString& systemId)
{
	_inDoctype = true;
	// XML allows one declaration, before the root element.
	if (_rootStarted || _haveDoctype) return;
	_haveDoctype = true;
	if (!XMLTextRules::isSystemId(systemId)) return;
	_systemId = systemId;
	if (XMLTextRules::isPublicId(publicId)) _publicId = publicId;
}


void WellFormedAdapter::endDTD()
{
	_inDoctype = false;
}


void WellFormedAdapter::startEntity(const XMLString& name)
{
	_writer.startEntity(name);
}


void WellFormedAdapter::endEntity(const XMLString& name)
{
	_writer.endEntity(name);
}


void WellFormedAdapter::startCDATA()
{
	_inCDATA = true;
	_cdataBrackets = 0;
	_writer.startCDATA();
}


void WellFormedAdapter::endCDATA()
{
	_inCDATA = false;
	_writer.endCDATA();
}


void WellFormedAdapter::comment(const XMLChar ch[], int start, int length)
{
	// The format gives a declaration no comments; a comment reported inside
	// one would belong to a subset that is not printed.
	if (_inDoctype) return;
	const char* const text = ch + start;
	const std::size_t size = textLength(length);
	checkText("a comment", text, size);
	const std::string content(text, size);
	if (content.find("--") != std::string::npos)
		fault("comment contains \"--\": " + XMLTextRules::shown(content));
	if (size > 0 && text[size - 1] == '-')
		fault("comment ends with \"-\": " + XMLTextRules::shown(content));
	if (holding())
	{
		_prolog.push_back(PrologEvent{true, std::string(), content});
		return;
	}
	_writer.comment(text, 0, static_cast<int>(size));
}


void WellFormedAdapter::notationDecl(const XMLString& name, const XMLString* publicId, const XMLString* systemId)
{
	if (_rootStarted || !XMLTextRules::isName(name)) return;
	const XMLString none;
	const bool havePublicId = publicId && XMLTextRules::isPublicId(*publicId);
	const bool haveSystemId = systemId && XMLTextRules::isSystemId(*systemId);
	if (!havePublicId && !haveSystemId) return;
	_notations.push_back(Notation(name, havePublicId ? *publicId : none, haveSystemId ? *systemId : none));
}


void WellFormedAdapter::unparsedEntityDecl(const XMLString& name, const XMLString* publicId, const XMLString& systemId, const XMLString& notationName)
{
	if (_rootStarted || !XMLTextRules::isName(name) || !XMLTextRules::isName(notationName) || !XMLTextRules::isSystemId(systemId)) return;
	const XMLString none;
	const bool havePublicId = publicId && XMLTextRules::isPublicId(*publicId);
	_unparsedEntities.push_back(UnparsedEntity(name, havePublicId ? *publicId : none, systemId, notationName));
}


bool WellFormedAdapter::holding() const
{
	return _haveDoctype && !_inDoctype && !_rootStarted;
}


void WellFormedAdapter::writeProlog()
{
	for (const PrologEvent& event: _prolog)
	{
		if (event.comment) _writer.comment(event.text.data(), 0, static_cast<int>(event.text.size()));
		else _writer.processingInstruction(event.target, event.text);
	}
	_prolog.clear();
}


void WellFormedAdapter::writeDoctype(const std::string& rootName)
{
	// A public identifier needs a system identifier in XML text.
	const XMLString none;
	_writer.startDTD(rootName, _systemId.empty() ? none : _publicId, _systemId);
	for (const Notation& notation: _notations)
	{
		const XMLString* pPublicId = notation.getPublicId().empty() ? 0 : &notation.getPublicId();
		const XMLString* pSystemId = notation.getSystemId().empty() ? 0 : &notation.getSystemId();
		_writer.notationDecl(notation.getName(), pPublicId, pSystemId);
	}
	for (const UnparsedEntity& entity: _unparsedEntities)
	{
		const XMLString* pPublicId = entity.getPublicId().empty() ? 0 : &entity.getPublicId();
		_writer.unparsedEntityDecl(entity.getName(), pPublicId, entity.getSystemId(), entity.getNotationName());
	}
	_writer.endDTD();
}


void WellFormedAdapter::checkElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Ixor::XML::Attributes& attributes)
{
	if (_rootEnded) fault("the document has a second root element " + XMLTextRules::shown(qname.empty() ? localName : qname));
	const XMLString& elementName = qname.empty() ? localName : qname;

	// The prefixes that this element declares, and those its names use,
	// must agree: the writer would otherwise move a name into another
	// namespace.
	// An unprefixed name needs no binding: the writer gives it a prefix
	// when the default namespace is another.
	_elementBindings.assign(_declared.begin() + static_cast<std::ptrdiff_t>(_pendingStart), _declared.end());
	const std::string prefix = checkName("element", uri, localName, qname);
	if (!prefix.empty()) bind(prefix, uri, elementName);

	const int count = attributes.getLength();
	_attributeNames.clear();
	for (int i = 0; i < count; ++i)
	{
		const XMLString& attributeURI = attributes.getURI(i);
		const XMLString& attributeLocalName = attributes.getLocalName(i);
		const std::string attributePrefix = checkName("attribute", attributeURI, attributeLocalName, attributes.getQName(i));
		if (attributeURI.empty() && attributeLocalName == XMLNS)
			fault("an attribute named \"xmlns\" would be read as a namespace declaration");
		checkText("an attribute value", attributes.getValue(i));
		if (!attributePrefix.empty()) bind(attributePrefix, attributeURI, elementName);
		_attributeNames.push_back(AttributeName(&attributeURI, &attributeLocalName));
	}
	checkAttributesDiffer();

	// An element without namespace inside a default namespace needs
	// xmlns="", which the writer does not add itself.
	if (uri.empty() && !defaultNamespace().empty())
	{
		for (std::size_t i = _pendingStart; i < _declared.size(); ++i)
		{
			if (_declared[i].first.empty())
				fault("element " + XMLTextRules::shown(elementName) + " has no namespace but declares a default namespace");
		}
		_declared.push_back(Binding(std::string(), std::string()));
		_writer.startPrefixMapping(std::string(), std::string());
	}
}


std::string WellFormedAdapter::checkName(const char* what, const XMLString& uri, const XMLString& localName, const XMLString& qname)
{
	std::string prefix;
	bool valid = XMLTextRules::isNCName(localName);
	if (valid && !qname.empty() && qname != localName)
	{
		// "prefix:local", with the local name as reported.
		const std::size_t colon = qname.size() - localName.size() - 1;
		valid = qname.size() > localName.size() + 1 && qname[colon] == ':' && qname.compare(colon + 1, std::string::npos, localName) == 0;
		if (valid) prefix.assign(qname, 0, colon);
		valid = valid && XMLTextRules::isNCName(prefix);
	}
	const XMLString& name = qname.empty() ? localName : qname;
	if (!valid) fault(std::string(what) + " name " + XMLTextRules::shown(name) + " is not an XML name");
	if (uri == XMLTextRules::XMLNS_NAMESPACE)
		fault(std::string(what) + " " + XMLTextRules::shown(name) + " is in the namespace reserved for namespace declarations");
	if (prefix == XMLNS) fault(std::string(what) + " " + XMLTextRules::shown(name) + " uses the reserved prefix \"xmlns\"");
	if (!prefix.empty() && ((prefix == XML_PREFIX) != (uri == XMLTextRules::XML_NAMESPACE)))
		fault(std::string(what) + " " + XMLTextRules::shown(name) + ": only the prefix \"xml\" names the XML namespace, and it names no other");
	if (!prefix.empty() && uri.empty()) fault(std::string(what) + " " + XMLTextRules::shown(name) + " has a prefix but no namespace");
	checkText("a namespace name", uri);
	return prefix;
}


void WellFormedAdapter::bind(const std::string& prefix, const std::string& uri, const XMLString& elementName)
{
	for (const Binding& binding: _elementBindings)
	{
		if (binding.first != prefix) continue;
		if (binding.second != uri)
			fault("prefix " + XMLTextRules::shown(prefix) + " names two namespaces on element " + XMLTextRules::shown(elementName));
		return;
	}
	_elementBindings.push_back(Binding(prefix, uri));
}


void WellFormedAdapter::checkAttributesDiffer()
{
	const auto same = [](const AttributeName& a, const AttributeName& b) { return *a.first == *b.first && *a.second == *b.second; };
	const auto less = [](const AttributeName& a, const AttributeName& b)
		{ return *a.second < *b.second || (*a.second == *b.second && *a.first < *b.first); };
	if (_attributeNames.size() > FEW_ATTRIBUTES)
	{
		std::sort(_attributeNames.begin(), _attributeNames.end(), less);
		const auto twice = std::adjacent_find(_attributeNames.begin(), _attributeNames.end(), same);
		if (twice != _attributeNames.end()) fault("attribute " + XMLTextRules::shown(*twice->second) + " appears twice");
		return;
	}
	for (std::size_t i = 0; i < _attributeNames.size(); ++i)
	{
		for (std::size_t j = i + 1; j < _attributeNames.size(); ++j)
		{
			if (same(_attributeNames[i], _attributeNames[j])) fault("attribute " + XMLTextRules::shown(*_attributeNames[i].second) + " appears twice");
		}
	}
}


const std::string& WellFormedAdapter::defaultNamespace() const
{
	for (std::size_t i = _declared.size(); i > 0; --i)
	{
		if (_declared[i - 1].first.empty()) return _declared[i - 1].second;
	}
	static const std::string NONE;
	return NONE;
}


void WellFormedAdapter::writeText(const char* text, std::size_t length)
{
	// A reader turns a literal carriage return into a line feed.
	const char* const end = text + length;
	for (const char* cr; (cr = static_cast<const char*>(std::memchr(text, '\r', static_cast<std::size_t>(end - text)))); text = cr + 1)
	{
		if (cr != text) _writer.characters(text, 0, static_cast<int>(cr - text));
		_writer.rawCharacters(CARRIAGE_RETURN);
	}
	if (text != end) _writer.characters(text, 0, static_cast<int>(end - text));
}


void WellFormedAdapter::writeCDATAText(const char* text, std::size_t length)
{
	// A CDATA section cannot hold "]]>" nor keep a carriage return: the
	// section ends before the '>' or around the carriage return.
	std::size_t written = 0;
	for (std::size_t i = 0; i < length; ++i)
	{
		const char c = text[i];
		if (c == '\r' || (c == '>' && _cdataBrackets >= 2))
		{
			if (i > written) _writer.characters(text, static_cast<int>(written), static_cast<int>(i - written));
			_writer.endCDATA();
			if (c == '\r') _writer.rawCharacters(CARRIAGE_RETURN);
			_writer.startCDATA();
			written = c == '\r' ? i + 1 : i;
			_cdataBrackets = 0;
			continue;
		}
		_cdataBrackets = c == ']' ? std::min(_cdataBrackets + 1, 2) : 0;
	}
	if (length > written) _writer.characters(text, static_cast<int>(written), static_cast<int>(length - written));
}


} } // namespace Ixor::FastInfoset
