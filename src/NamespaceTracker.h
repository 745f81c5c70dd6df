//
// NamespaceTracker.h
//
// Library: FastInfoset
// Module:  NamespaceTracker
//
// The writer's namespace scopes. Internal: this header is not installed.
//


#ifndef FastInfoset_NamespaceTracker_INCLUDED
#define FastInfoset_NamespaceTracker_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Poco/SAX/NamespaceSupport.h"
#include <cstddef>
#include <string>
#include <utility>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class NamespaceTracker
	/// The prefixes in scope while a document is written, with memory: a
	/// writer asks for the prefix of the same namespace name element after
	/// element, and the answer changes only when a declaration comes or
	/// goes. Also numbers the prefixes the writer makes up, from 1 in
	/// each document.
{
public:
	typedef std::pair<std::string, std::string> Declaration;
		/// A prefix and its namespace name.

	NamespaceTracker();

	void startDocument();
		/// Only the prefixes "xml" and "xmlns", and one open context for the
		/// document; made-up prefixes start again from "ns1".

	bool isMapped(const std::string& uri);
		/// Whether a prefix in scope maps to uri.

	const std::string& prefixOf(const std::string& uri);
		/// A prefix in scope for uri, as the host's namespace support picks
		/// it; the empty string when there is none.

	const std::string& attributePrefixOf(const std::string& uri);
		/// A prefix other than the empty one that means uri in scope, or the
		/// empty string when there is none.

	const std::string& uriOf(const std::string& prefix);
		/// The namespace name prefix means in scope; empty when unmapped.

	void declarePrefix(const std::string& prefix, const std::string& uri);
		/// Declares prefix in the current context.

	void undeclarePrefix(const std::string& prefix);

	void pushContext();
	void popContext();
		/// More pops than pushes leave the document's context open.

	std::size_t declarations(std::vector<Declaration>& declarations);
		/// Fills the first entries of declarations, which only grows, with
		/// the declarations of the current context ordered by prefix, the
		/// default namespace first; returns how many there are.

	std::string newPrefix();
		/// "ns" and the next number, from 1 on.

private:
	std::size_t collectDeclarations(std::vector<Declaration>& declarations);
	void closeDeclaringContext();
	void lookUpPrefix(const std::string& uri);
	void lookUpURI(const std::string& prefix);

	// Most elements declare nothing: the namespace support gets a context
	// only at the depth where a declaration is made, and an empty context
	// would change no answer.
	Ixor::XML::NamespaceSupport            _namespaces;
	Ixor::XML::NamespaceSupport::PrefixSet _prefixes;          // scratch
	int                                    _prefixCounter;
	UInt64                                 _generation;        // changes with every declaration made or dropped
	std::size_t                            _depth;             // contexts opened since the first
	std::vector<std::size_t>               _contextDepths;     // the depth of each context of the namespace support
	bool                                   _emptyURIMapped;    // whether a prefix was ever declared for no namespace
	std::string                            _noPrefix;
	std::string                            _prefixCacheURI;
	std::string                            _prefixCachePrefix;
	bool                                   _prefixCacheMapped;
	UInt64                                 _prefixCacheGeneration;
	std::string                            _uriCachePrefix;
	std::string                            _uriCacheURI;
	UInt64                                 _uriCacheGeneration;
	std::string                            _attributePrefixURI;
	std::string                            _attributePrefix;
	UInt64                                 _attributePrefixGeneration;
};


//
// inlines
//
inline const std::string& NamespaceTracker::prefixOf(const std::string& uri)
{
	// Nothing but a prefix declared with an empty namespace name maps to it:
	// without one, the empty namespace name has the empty prefix.
	if (uri.empty() && !_emptyURIMapped) return _noPrefix;
	if (_prefixCacheGeneration != _generation || uri != _prefixCacheURI) lookUpPrefix(uri);
	return _prefixCachePrefix;
}


inline bool NamespaceTracker::isMapped(const std::string& uri)
{
	if (uri.empty() && !_emptyURIMapped) return _namespaces.isMapped(uri);
	prefixOf(uri);
	return _prefixCacheMapped;
}


inline std::size_t NamespaceTracker::declarations(std::vector<Declaration>& declarations)
{
	// A context that received no declaration has none to give.
	if (_contextDepths.back() != _depth) return 0;
	return collectDeclarations(declarations);
}


inline void NamespaceTracker::pushContext()
{
	++_depth;
}


inline void NamespaceTracker::popContext()
{
	// The first context stays.
	if (_depth == 0) return;
	if (_contextDepths.back() == _depth) closeDeclaringContext();
	--_depth;
}


inline const std::string& NamespaceTracker::uriOf(const std::string& prefix)
{
	if (_uriCacheGeneration != _generation || prefix != _uriCachePrefix) lookUpURI(prefix);
	return _uriCacheURI;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_NamespaceTracker_INCLUDED
