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
		/// Valid until the next declaration or context change.

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
	struct Binding
	{
		std::string prefix;
		std::string uri;
	};

	std::size_t collectDeclarations(std::vector<Declaration>& declarations);
	void lookUpPrefix(const std::string& uri);
	const std::string& lookUpURI(const std::string& prefix);
	const std::string* findURI(const std::string& prefix) const;
	const Binding* innermostFor(const std::string& uri) const;
	bool hasBinding(const std::string& uri) const;
	void bind(const std::string& prefix, const std::string& uri);

	// The bindings in scope, outermost first, each context's after those of
	// the contexts around it; entries past _bindingCount are spare, kept
	// with their strings' memory. Answers are those of the host's
	// namespace support: an inner binding of a prefix hides an outer one
	// for uriOf(); prefixOf() takes the innermost context that has a
	// prefix for the namespace name, and the first such prefix in order.
	std::vector<Binding>                   _bindings;
	std::size_t                            _bindingCount;
	std::vector<std::size_t>               _contextStarts;     // where each open context's bindings start
	std::vector<const Binding*>            _ordered;           // scratch
	int                                    _prefixCounter;
	UInt64                                 _generation;        // changes with every declaration made or dropped
	bool                                   _emptyURIMapped;    // whether a prefix was ever declared for no namespace
	std::string                            _noPrefix;
	std::string                            _prefixCacheURI;
	std::string                            _prefixCachePrefix;
	bool                                   _prefixCacheMapped;
	UInt64                                 _prefixCacheGeneration;
	struct URIAnswer
		/// A prefix looked up, and where its namespace name is held.
	{
		std::string        prefix;
		const std::string* pURI = nullptr;
		UInt64             generation = 0;
	};

	// An element's prefix and its attributes' take turns: a few answers are
	// kept, each valid while no declaration comes or goes (bindings move
	// only then).
	enum { URI_ANSWERS = 4 };
	URIAnswer                              _uriAnswers[URI_ANSWERS];
	unsigned int                           _nextURIAnswer;
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
	if (uri.empty() && !_emptyURIMapped) return hasBinding(uri);
	prefixOf(uri);
	return _prefixCacheMapped;
}


inline std::size_t NamespaceTracker::declarations(std::vector<Declaration>& declarations)
{
	// A context that received no declaration has none to give.
	if (_contextStarts.back() == _bindingCount) return 0;
	return collectDeclarations(declarations);
}


inline void NamespaceTracker::pushContext()
{
	_contextStarts.push_back(_bindingCount);
}


inline void NamespaceTracker::popContext()
{
	// The first context stays.
	if (_contextStarts.size() == 1) return;
	if (_contextStarts.back() != _bindingCount)
	{
		_bindingCount = _contextStarts.back();
		++_generation;
	}
	_contextStarts.pop_back();
}


inline const std::string& NamespaceTracker::uriOf(const std::string& prefix)
{
	for (const URIAnswer& answer: _uriAnswers)
	{
		if (answer.generation == _generation && answer.prefix == prefix) return *answer.pURI;
	}
	return lookUpURI(prefix);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_NamespaceTracker_INCLUDED
