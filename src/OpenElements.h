//
// OpenElements.h
//
// Library: FastInfoset
// Module:  OpenElements
//
// The elements a writer has started and not ended. Internal: this header is
// not installed.
//


#ifndef FastInfoset_OpenElements_INCLUDED
#define FastInfoset_OpenElements_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "WriterTables.h"
#include <cstddef>
#include <memory>
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class OpenElements
	/// The stack of open elements, for the check of their end events. Each
	/// keeps the parts of its name where the tables hold them, which costs
	/// no copy, and copies only of the parts they refused (rare: only full
	/// tables refuse). Once the vocabulary has new tables the parts it held
	/// are gone, and an end event is taken as it comes.
{
public:
	OpenElements();

	std::size_t depth() const;

	void push(const WriterTables::StoredName& stored, UInt64 revision, const std::string& prefix, const std::string& uri, const std::string& localName);
		/// stored holds the parts the tables hold, null for the others,
		/// which are copied from prefix, uri and localName; revision is the
		/// vocabulary's.

	void pop();

	void clear();
		/// Pops every element.

	bool topMatches(const std::string& uri, const std::string& localName, const std::string& qname, UInt64 revision) const;
		/// As the host's XML writer compares: the same namespace name and
		/// local name, or the same qualified name.

	bool topKnown(UInt64 revision) const;
		/// Whether the name of the innermost element can still be told.

	std::string topName() const;
		/// prefix:local, {namespace}local or local.

private:
	void copyParts(const std::string& prefix, const std::string& uri, const std::string& localName);

	struct Element
	{
		WriterTables::StoredName name;
		UInt64                   revision;   // of the vocabulary when the element started
		int                      copies;     // how many of its parts are copies
	};

	std::vector<Element>                      _elements;
	std::vector<std::unique_ptr<std::string>> _copies;   // in place while their element is open
	std::size_t                               _depth;
};


//
// inlines
//
inline std::size_t OpenElements::depth() const
{
	return _depth;
}


inline void OpenElements::push(const WriterTables::StoredName& stored, UInt64 revision, const std::string& prefix, const std::string& uri, const std::string& localName)
{
	if (_depth == _elements.size()) _elements.emplace_back();
	Element& element = _elements[_depth++];
	element.name = stored;
	element.revision = revision;
	element.copies = 0;
	if (!stored.pPrefix || !stored.pURI || !stored.pLocalName) copyParts(prefix, uri, localName);
}


inline void OpenElements::pop()
{
	for (int i = _elements[_depth - 1].copies; i > 0; --i) _copies.pop_back();
	--_depth;
}


inline void OpenElements::clear()
{
	while (_depth != 0) pop();
}


inline bool OpenElements::topKnown(UInt64 revision) const
{
	return _elements[_depth - 1].revision == revision;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_OpenElements_INCLUDED
