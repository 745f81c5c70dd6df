#include "NamespaceTracker.h"
#include "Poco/NumberFormatter.h"


namespace Ixor {
namespace FastInfoset {


NamespaceTracker::NamespaceTracker():
	_prefixCounter(0),
	_generation(1),
	_depth(0),
	_emptyURIMapped(false),
	_prefixCacheMapped(false),
	_prefixCacheGeneration(0),
	_uriCacheGeneration(0),
	_attributePrefixGeneration(0)
{
	_namespaces.reset();
	_contextDepths.assign(1, 0);   // the reset context declares "xml" and "xmlns"
}


void NamespaceTracker::startDocument()
{
	// Back to the first context, which holds only "xml" and "xmlns": unlike
	// a reset of the namespace support, this allocates nothing.
	while (_contextDepths.size() > 1)
	{
		_namespaces.popContext();
		_contextDepths.pop_back();
	}
	_depth = 0;
	_prefixCounter = 0;
	++_generation;
	pushContext();
}


void NamespaceTracker::lookUpPrefix(const std::string& uri)
{
	_prefixCacheURI = uri;
	_prefixCachePrefix = _namespaces.getPrefix(uri);
	_prefixCacheMapped = _namespaces.isMapped(uri);
	_prefixCacheGeneration = _generation;
}


void NamespaceTracker::lookUpURI(const std::string& prefix)
{
	_uriCachePrefix = prefix;
	_uriCacheURI = _namespaces.getURI(prefix);
	_uriCacheGeneration = _generation;
}


const std::string& NamespaceTracker::attributePrefixOf(const std::string& uri)
	/// The namespace support may name the default namespace or a prefix that
	/// an inner declaration took over; neither serves an attribute.
{
	if (_attributePrefixGeneration != _generation || uri != _attributePrefixURI)
	{
		_attributePrefixURI = uri;
		_attributePrefixGeneration = _generation;
		const std::string& first = _namespaces.getPrefix(uri);
		if (!first.empty() && _namespaces.getURI(first) == uri)
		{
			_attributePrefix = first;
		}
		else
		{
			_attributePrefix.clear();
			_prefixes.clear();
			_namespaces.getPrefixes(uri, _prefixes);
			for (const std::string& prefix: _prefixes)
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


void NamespaceTracker::declarePrefix(const std::string& prefix, const std::string& uri)
{
	if (_contextDepths.back() != _depth)
	{
		_namespaces.pushContext();
		_contextDepths.push_back(_depth);
	}
	_namespaces.declarePrefix(prefix, uri);
	if (uri.empty() && !prefix.empty()) _emptyURIMapped = true;
	++_generation;
}


void NamespaceTracker::undeclarePrefix(const std::string& prefix)
{
	if (_contextDepths.back() == _depth) _namespaces.undeclarePrefix(prefix);
	++_generation;
}


void NamespaceTracker::closeDeclaringContext()
{
	_namespaces.popContext();
	_contextDepths.pop_back();
	++_generation;
}


std::size_t NamespaceTracker::collectDeclarations(std::vector<Declaration>& declarations)
{
	// The prefix set of the namespace support is ordered already.
	_prefixes.clear();
	_namespaces.getDeclaredPrefixes(_prefixes);
	std::size_t count = 0;
	for (const std::string& prefix: _prefixes)
	{
		if (count == declarations.size()) declarations.emplace_back();
		Declaration& declaration = declarations[count++];
		declaration.first = prefix;
		declaration.second = _namespaces.getURI(prefix);
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
