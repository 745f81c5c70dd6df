#include "NamespaceTracker.h"
#include "Poco/NumberFormatter.h"
#include "Poco/SAX/NamespaceSupport.h"
#include <algorithm>


namespace Ixor {
namespace FastInfoset {


NamespaceTracker::NamespaceTracker():
	_bindingCount(0),
	_prefixCounter(0),
	_generation(1),
	_emptyURIMapped(false),
	_prefixCacheMapped(false),
	_prefixCacheGeneration(0),
	_nextURIAnswer(0),
	_attributePrefixGeneration(0)
{
	// The first context declares "xml" and "xmlns" as the host's namespace
	// support does, with its names for them.
	_contextStarts.assign(1, 0);
	bind(Ixor::XML::NamespaceSupport::XML_NAMESPACE_PREFIX, Ixor::XML::NamespaceSupport::XML_NAMESPACE);
	bind(Ixor::XML::NamespaceSupport::XMLNS_NAMESPACE_PREFIX, Ixor::XML::NamespaceSupport::XMLNS_NAMESPACE);
}


void NamespaceTracker::startDocument()
{
	// Back to the first context; the bindings keep their memory.
	if (_contextStarts.size() > 1) _bindingCount = _contextStarts[1];
	_contextStarts.resize(1);
	_prefixCounter = 0;
	++_generation;
	pushContext();
}


void NamespaceTracker::bind(const std::string& prefix, const std::string& uri)
{
	if (_bindingCount == _bindings.size()) _bindings.emplace_back();
	Binding& binding = _bindings[_bindingCount++];
	binding.prefix = prefix;
	binding.uri = uri;
}


const std::string* NamespaceTracker::findURI(const std::string& prefix) const
{
	for (std::size_t i = _bindingCount; i > 0; --i)
	{
		if (_bindings[i - 1].prefix == prefix) return &_bindings[i - 1].uri;
	}
	return 0;
}


bool NamespaceTracker::hasBinding(const std::string& uri) const
{
	for (std::size_t i = 0; i < _bindingCount; ++i)
	{
		if (_bindings[i].uri == uri) return true;
	}
	return false;
}


const NamespaceTracker::Binding* NamespaceTracker::innermostFor(const std::string& uri) const
	/// The innermost context with a binding of uri, and its first such
	/// prefix in order; whether an inner context binds that prefix again
	/// does not matter, as for the host.
{
	std::size_t end = _bindingCount;
	for (std::size_t context = _contextStarts.size(); context > 0; --context)
	{
		const std::size_t start = _contextStarts[context - 1];
		const Binding* pFirst = 0;
		for (std::size_t i = start; i < end; ++i)
		{
			const Binding& binding = _bindings[i];
			if (binding.uri == uri && (!pFirst || binding.prefix < pFirst->prefix)) pFirst = &binding;
		}
		if (pFirst) return pFirst;
		end = start;
	}
	return 0;
}


void NamespaceTracker::lookUpPrefix(const std::string& uri)
{
	const Binding* pBinding = innermostFor(uri);
	_prefixCacheURI = uri;
	if (pBinding) _prefixCachePrefix = pBinding->prefix;
	else _prefixCachePrefix.clear();
	_prefixCacheMapped = pBinding != 0;
	_prefixCacheGeneration = _generation;
}


const std::string& NamespaceTracker::lookUpURI(const std::string& prefix)
{
	const std::string* pURI = findURI(prefix);
	URIAnswer& answer = _uriAnswers[_nextURIAnswer++ % URI_ANSWERS];
	answer.prefix = prefix;
	answer.pURI = pURI ? pURI : &_noPrefix;
	answer.generation = _generation;
	return *answer.pURI;
}


const std::string& NamespaceTracker::attributePrefixOf(const std::string& uri)
	/// The prefix that prefixOf() would give may be the default namespace's
	/// or one that an inner declaration took over; neither serves an
	/// attribute. Then the first prefix in order that means uri here.
{
	if (_attributePrefixGeneration != _generation || uri != _attributePrefixURI)
	{
		_attributePrefixURI = uri;
		_attributePrefixGeneration = _generation;
		_attributePrefix.clear();
		const Binding* pFirst = innermostFor(uri);
		const std::string* pURI = pFirst && !pFirst->prefix.empty() ? findURI(pFirst->prefix) : 0;
		if (pURI && *pURI == uri)
		{
			_attributePrefix = pFirst->prefix;
		}
		else
		{
			const std::string* pBest = 0;
			for (std::size_t i = 0; i < _bindingCount; ++i)
			{
				const std::string& prefix = _bindings[i].prefix;
				if (_bindings[i].uri != uri || prefix.empty() || (pBest && !(prefix < *pBest))) continue;
				const std::string* pMeant = findURI(prefix);
				if (pMeant && *pMeant == uri) pBest = &prefix;
			}
			if (pBest) _attributePrefix = *pBest;
		}
	}
	return _attributePrefix;
}


void NamespaceTracker::declarePrefix(const std::string& prefix, const std::string& uri)
	/// A prefix declared twice in one context keeps its first namespace
	/// name, as with the host's namespace support.
{
	bool declared = false;
	for (std::size_t i = _contextStarts.back(); i < _bindingCount && !declared; ++i) declared = _bindings[i].prefix == prefix;
	if (!declared) bind(prefix, uri);
	if (uri.empty() && !prefix.empty()) _emptyURIMapped = true;
	++_generation;
}


void NamespaceTracker::undeclarePrefix(const std::string& prefix)
	/// Drops the innermost binding of prefix, in whichever context it is.
{
	for (std::size_t i = _bindingCount; i > 0; --i)
	{
		if (_bindings[i - 1].prefix != prefix) continue;
		// The binding goes to the spare ones, keeping its strings' memory.
		std::rotate(_bindings.begin() + static_cast<std::ptrdiff_t>(i - 1), _bindings.begin() + static_cast<std::ptrdiff_t>(i), _bindings.begin() + static_cast<std::ptrdiff_t>(_bindingCount));
		--_bindingCount;
		for (std::size_t& start: _contextStarts)
		{
			if (start >= i) --start;
		}
		break;
	}
	++_generation;
}


std::size_t NamespaceTracker::collectDeclarations(std::vector<Declaration>& declarations)
{
	// Ordered by prefix, the default namespace first.
	_ordered.clear();
	for (std::size_t i = _contextStarts.back(); i < _bindingCount; ++i) _ordered.push_back(&_bindings[i]);
	std::sort(_ordered.begin(), _ordered.end(), [](const Binding* pA, const Binding* pB) { return pA->prefix < pB->prefix; });
	std::size_t count = 0;
	for (const Binding* pBinding: _ordered)
	{
		if (count == declarations.size()) declarations.emplace_back();
		Declaration& declaration = declarations[count++];
		declaration.first = pBinding->prefix;
		declaration.second = pBinding->uri;
	}
	return count;
}


std::string NamespaceTracker::newPrefix()
{
	std::string prefix("ns");
	Ixor::NumberFormatter::append(prefix, ++_prefixCounter);
	return prefix;
}


} } // namespace Ixor::FastInfoset
