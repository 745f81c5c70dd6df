//
// PendingElement.h
//
// Library: FastInfoset
// Module:  PendingElement
//
// The element a writer is about to write. Internal: this header is not
// installed.
//


#ifndef FastInfoset_PendingElement_INCLUDED
#define FastInfoset_PendingElement_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "NamespaceTracker.h"
#include <cstddef>
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class PendingElement
	/// The element being started, gathered and checked before anything of
	/// it is written: its prefix, its attributes with theirs, and the
	/// namespace declarations it carries. Reused from element to element,
	/// so that an element allocates nothing once the buffers have grown.
	///
	/// The attribute list given to gather() must outlive the writing of the
	/// element: its strings are referred to, not copied.
{
public:
	struct Attribute
	{
		const std::string* pURI;
		const std::string* pLocalName;
		const std::string* pValue;
		std::string        prefix;
		std::string        localName;   // when the attribute gave only a qualified name
	};

	PendingElement();

	const std::string& gather(const std::string& uri, const std::string& localName, const std::string& qname, const Ixor::XML::Attributes& attributes, NamespaceTracker& namespaces);
		/// Chooses the prefixes of the element and of its attributes,
		/// declaring in the current context what they need, and collects the
		/// declarations of that context. Returns the name to write: the
		/// local name, or the qualified name without namespace processing.
		///
		/// Throws FISException "Tag mismatch" with the name when the element
		/// has no usable name, "Attribute without a name", and "Duplicate
		/// attribute" with the name of an attribute given twice.

	const std::string& prefix() const;

	std::size_t attributeCount() const;
	const Attribute& attribute(std::size_t i) const;

	std::size_t declarationCount() const;
	const NamespaceTracker::Declaration& declaration(std::size_t i) const;

private:
	void addAttributes(const Ixor::XML::Attributes& attributes, NamespaceTracker& namespaces);
	void choosePrefix(std::size_t index, const std::string& qname, NamespaceTracker& namespaces);
	bool prefixUsedHere(const std::string& prefix, std::size_t before) const;
	void checkDistinctAttributes();

	std::string                                _prefix;
	std::string                                _qnamePrefix;       // scratch
	std::string                                _qnameLocal;        // scratch
	std::vector<Attribute>                     _attributes;
	std::size_t                                _attributeCount;
	std::vector<NamespaceTracker::Declaration> _declarations;
	std::size_t                                _declarationCount;
	std::vector<std::size_t>                   _slots;             // scratch of the check for attributes given twice
};


//
// inlines
//
inline const std::string& PendingElement::prefix() const
{
	return _prefix;
}


inline std::size_t PendingElement::attributeCount() const
{
	return _attributeCount;
}


inline const PendingElement::Attribute& PendingElement::attribute(std::size_t i) const
{
	return _attributes[i];
}


inline std::size_t PendingElement::declarationCount() const
{
	return _declarationCount;
}


inline const NamespaceTracker::Declaration& PendingElement::declaration(std::size_t i) const
{
	return _declarations[i];
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_PendingElement_INCLUDED
