#include "PendingElement.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/VocabularyHash.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/XML/Name.h"


namespace Ixor {
namespace FastInfoset {


PendingElement::PendingElement():
	_attributeCount(0),
	_declarationCount(0)
{
}


const std::string& PendingElement::gather(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes, NamespaceTracker& namespaces)
{
	_prefix.clear();
	_declarationCount = 0;
	_attributeCount = 0;

	const std::string* pName = &localName;
	if (!localName.empty() && qname == localName)
	{
		// A name given without prefix stays so, as a DOM holds it: its
		// namespace becomes the default one where it is not.
		if (namespaces.uriOf(_prefix) != uri) namespaces.declarePrefix(_prefix, uri);
	}
	else if (!localName.empty() && qname.empty())
	{
		if (!uri.empty() && !namespaces.isMapped(uri)) namespaces.declarePrefix(namespaces.newPrefix(), uri);
		_prefix = namespaces.prefixOf(uri);
	}
	else if (uri.empty() && localName.empty() && !qname.empty())
	{
		pName = &qname;
	}
	else if (!localName.empty() && !qname.empty())
	{
		Ixor::XML::Name::split(qname, _qnamePrefix, _qnameLocal);
		if (_qnamePrefix.empty()) _prefix = namespaces.prefixOf(uri);
		else _prefix = _qnamePrefix;
		const std::string& mapped = namespaces.uriOf(_prefix);
		if ((mapped.empty() || mapped != uri) && !uri.empty()) namespaces.declarePrefix(_prefix, uri);
	}
	else throw FISException("Tag mismatch", qname.empty() ? localName : qname);

	addAttributes(attributes, namespaces);
	_declarationCount = namespaces.declarations(_declarations);
	return *pName;
}


void PendingElement::addAttributes(const Ixor::XML::Attributes& attributes, NamespaceTracker& namespaces)
{
	const int count = attributes.getLength();
	// A bit per attribute, chosen by its local name: only attributes whose
	// bits meet can be the same, and only then are they compared in full.
	UInt64 seen = 0;
	bool mayRepeat = false;
	for (int i = 0; i < count; ++i)
	{
		if (_attributeCount == _attributes.size()) _attributes.emplace_back();
		Attribute& attribute = _attributes[_attributeCount++];
		attribute.pURI = &attributes.getURI(i);
		attribute.pLocalName = &attributes.getLocalName(i);
		attribute.pValue = &attributes.getValue(i);
		if (attribute.pLocalName->empty())
		{
			const std::string& qname = attributes.getQName(i);
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
		else choosePrefix(_attributeCount - 1, attributes.getQName(i), namespaces);

		const std::string& local = *attribute.pLocalName;
		const UInt64 bit = UInt64(1) << ((local.size() + static_cast<unsigned char>(local[0]) * 3 + static_cast<unsigned char>(local.back()) * 5) & 63);
		mayRepeat |= (seen & bit) != 0;
		seen |= bit;
	}
	if (mayRepeat) checkDistinctAttributes();
}


void PendingElement::choosePrefix(std::size_t index, const std::string& qname, NamespaceTracker& namespaces)
	/// An attribute with a namespace name needs a prefix: unprefixed
	/// attributes have no namespace. The prefix of its qualified name when
	/// it has one and it can mean that namespace here, else a prefix in
	/// scope for the namespace, else a new one; what is not in scope is
	/// declared on the element.
{
	Attribute& attribute = _attributes[index];
	const std::string& uri = *attribute.pURI;
	const std::size_t colon = qname.find(':');
	if (colon != std::string::npos && colon != 0)
	{
		attribute.prefix.assign(qname, 0, colon);
		if (namespaces.uriOf(attribute.prefix) == uri) return;
		// A prefix that the element or an earlier attribute uses keeps its
		// meaning.
		if (!prefixUsedHere(attribute.prefix, index))
		{
			namespaces.declarePrefix(attribute.prefix, uri);
			return;
		}
	}
	const std::string& inScope = namespaces.attributePrefixOf(uri);
	if (!inScope.empty())
	{
		attribute.prefix = inScope;
		return;
	}
	attribute.prefix = namespaces.newPrefix();
	namespaces.declarePrefix(attribute.prefix, uri);
}


bool PendingElement::prefixUsedHere(const std::string& prefix, std::size_t before) const
{
	if (prefix == _prefix) return true;
	for (std::size_t i = 0; i < before; ++i)
	{
		if (_attributes[i].prefix == prefix) return true;
	}
	return false;
}


void PendingElement::checkDistinctAttributes()
	/// No two attributes of the element have the same namespace name and
	/// local name. Few are compared pairwise, many through a hash set of
	/// their positions.
{
	auto same = [this](std::size_t a, std::size_t b)
	{
		const Attribute& first = _attributes[a];
		const Attribute& second = _attributes[b];
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
		_slots.assign(size, FREE);
		for (std::size_t i = 0; i < _attributeCount && twice == _attributeCount; ++i)
		{
			const std::string& local = *_attributes[i].pLocalName;
			std::size_t slot = VocabularyHash<std::string>::bytes(local.data(), local.size()) & (size - 1);
			while (_slots[slot] != FREE && twice == _attributeCount)
			{
				if (same(_slots[slot], i)) twice = i;
				slot = (slot + 1) & (size - 1);
			}
			_slots[slot] = i;
		}
	}
	if (twice == _attributeCount) return;
	const Attribute& attribute = _attributes[twice];
	throw FISException("Duplicate attribute", attribute.prefix.empty() ? *attribute.pLocalName : attribute.prefix + ":" + *attribute.pLocalName);
}


} } // namespace Ixor::FastInfoset
