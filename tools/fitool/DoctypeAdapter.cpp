#include "DoctypeAdapter.h"
#include "Poco/XML/XMLWriter.h"


using Ixor::XML::XMLChar;
using Ixor::XML::XMLString;


namespace Fitool {


DoctypeAdapter::DoctypeAdapter(Ixor::XML::XMLWriter& writer):
	_writer(writer),
	_haveDoctype(false),
	_inDoctype(false),
	_rootStarted(false)
{
}


DoctypeAdapter::~DoctypeAdapter()
{
}


void DoctypeAdapter::setDocumentLocator(const Ixor::XML::Locator* pLocator)
{
	_writer.setDocumentLocator(pLocator);
}


void DoctypeAdapter::startDocument()
{
	_writer.startDocument();
}


void DoctypeAdapter::endDocument()
{
	// A declaration without a root element to name is dropped.
	writeProlog();
	_writer.endDocument();
}


void DoctypeAdapter::startElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Ixor::XML::Attributes& attributes)
{
	if (!_rootStarted)
	{
		_rootStarted = true;
		// The parser reports an unprefixed element with an empty qualified
		// name: its local name is then the name.
		if (_haveDoctype || !_notations.empty() || !_unparsedEntities.empty())
			writeDoctype(qname.empty() ? localName : qname);
		writeProlog();
	}
	_writer.startElement(uri, localName, qname, attributes);
}


void DoctypeAdapter::endElement(const XMLString& uri, const XMLString& localName, const XMLString& qname)
{
	_writer.endElement(uri, localName, qname);
}


void DoctypeAdapter::characters(const XMLChar ch[], int start, int length)
{
	if (holding())
	{
		_prolog.push_back(PrologEvent{PrologEvent::CHARACTERS, std::string(), std::string(ch + start, static_cast<std::size_t>(length))});
		return;
	}
	_writer.characters(ch, start, length);
}


void DoctypeAdapter::ignorableWhitespace(const XMLChar ch[], int start, int length)
{
	_writer.ignorableWhitespace(ch, start, length);
}


void DoctypeAdapter::processingInstruction(const XMLString& target, const XMLString& data)
{
	// One from inside the declaration goes out now, ahead of it: the writer
	// cannot print an internal subset around it. One after it waits with it.
	if (holding())
	{
		_prolog.push_back(PrologEvent{PrologEvent::PROCESSING_INSTRUCTION, target, data});
		return;
	}
	_writer.processingInstruction(target, data);
}


void DoctypeAdapter::startPrefixMapping(const XMLString& prefix, const XMLString& uri)
{
	_writer.startPrefixMapping(prefix, uri);
}


void DoctypeAdapter::endPrefixMapping(const XMLString& prefix)
{
	_writer.endPrefixMapping(prefix);
}


void DoctypeAdapter::skippedEntity(const XMLString& name)
{
	_writer.skippedEntity(name);
}


void DoctypeAdapter::startDTD(const XMLString&, const XMLString& publicId, const XMLString& systemId)
{
	_inDoctype = true;
	// XML allows one declaration, before the root element.
	if (_rootStarted || _haveDoctype) return;
	_haveDoctype = true;
	_publicId = publicId;
	_systemId = systemId;
}


void DoctypeAdapter::endDTD()
{
	_inDoctype = false;
}


void DoctypeAdapter::startEntity(const XMLString& name)
{
	_writer.startEntity(name);
}


void DoctypeAdapter::endEntity(const XMLString& name)
{
	_writer.endEntity(name);
}


void DoctypeAdapter::startCDATA()
{
	_writer.startCDATA();
}


void DoctypeAdapter::endCDATA()
{
	_writer.endCDATA();
}


void DoctypeAdapter::comment(const XMLChar ch[], int start, int length)
{
	// The format gives a declaration no comments; a comment reported inside
	// one would belong to a subset that is not printed.
	if (_inDoctype) return;
	if (holding())
	{
		_prolog.push_back(PrologEvent{PrologEvent::COMMENT, std::string(), std::string(ch + start, static_cast<std::size_t>(length))});
		return;
	}
	_writer.comment(ch, start, length);
}


void DoctypeAdapter::notationDecl(const XMLString& name, const XMLString* publicId, const XMLString* systemId)
{
	const XMLString none;
	if (_rootStarted || (!publicId && !systemId)) return;
	_notations.push_back(Ixor::FastInfoset::Notation(name, publicId ? *publicId : none, systemId ? *systemId : none));
}


void DoctypeAdapter::unparsedEntityDecl(const XMLString& name, const XMLString* publicId, const XMLString& systemId, const XMLString& notationName)
{
	const XMLString none;
	if (_rootStarted) return;
	_unparsedEntities.push_back(Ixor::FastInfoset::UnparsedEntity(name, publicId ? *publicId : none, systemId, notationName));
}


bool DoctypeAdapter::holding() const
{
	return _haveDoctype && !_inDoctype && !_rootStarted;
}


void DoctypeAdapter::writeProlog()
{
	for (const PrologEvent& event: _prolog)
	{
		switch (event.kind)
		{
		case PrologEvent::COMMENT:
			_writer.comment(event.text.data(), 0, static_cast<int>(event.text.size()));
			break;
		case PrologEvent::PROCESSING_INSTRUCTION:
			_writer.processingInstruction(event.target, event.text);
			break;
		case PrologEvent::CHARACTERS:
			_writer.characters(event.text.data(), 0, static_cast<int>(event.text.size()));
			break;
		}
	}
	_prolog.clear();
}


void DoctypeAdapter::writeDoctype(const std::string& rootName)
{
	// A public identifier needs a system identifier in XML text.
	const XMLString none;
	_writer.startDTD(rootName, _systemId.empty() ? none : _publicId, _systemId);
	for (const Ixor::FastInfoset::Notation& notation: _notations)
	{
		const XMLString* pPublicId = notation.getPublicId().empty() ? 0 : &notation.getPublicId();
		const XMLString* pSystemId = notation.getSystemId().empty() ? 0 : &notation.getSystemId();
		_writer.notationDecl(notation.getName(), pPublicId, pSystemId);
	}
	for (const Ixor::FastInfoset::UnparsedEntity& entity: _unparsedEntities)
	{
		const XMLString* pPublicId = entity.getPublicId().empty() ? 0 : &entity.getPublicId();
		_writer.unparsedEntityDecl(entity.getName(), pPublicId, entity.getSystemId(), entity.getNotationName());
	}
	_writer.endDTD();
}


} // namespace Fitool
