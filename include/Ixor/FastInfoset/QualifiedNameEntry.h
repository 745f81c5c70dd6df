//
// QualifiedNameEntry.h
//
// Library: FastInfoset
// Module:  QualifiedNameEntry
//


#ifndef FastInfoset_QualifiedNameEntry_INCLUDED
#define FastInfoset_QualifiedNameEntry_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API QualifiedNameEntry
	/// A qualified name as three indexes into the prefix, namespace-name and
	/// local-name tables of a document vocabulary; index 0 of the first two
	/// means "no prefix" and "no namespace".
{
public:
	QualifiedNameEntry();
		/// All three indexes 0; only the tables' index-0 placeholder uses it.

	QualifiedNameEntry(unsigned int prefixId, unsigned int namespaceId, unsigned int localNameId);

	unsigned int prefixId() const;
	unsigned int namespaceId() const;
	unsigned int localNameId() const;

	bool operator == (const QualifiedNameEntry& other) const;
	bool operator != (const QualifiedNameEntry& other) const;

	bool operator < (const QualifiedNameEntry& other) const;
		/// Lexicographic on (prefixId, namespaceId, localNameId).

private:
	unsigned int _prefixId;
	unsigned int _namespaceId;
	unsigned int _localNameId;
};


//
// inlines
//
inline QualifiedNameEntry::QualifiedNameEntry():
	_prefixId(0),
	_namespaceId(0),
	_localNameId(0)
{
}


inline QualifiedNameEntry::QualifiedNameEntry(unsigned int prefixId, unsigned int namespaceId, unsigned int localNameId):
	_prefixId(prefixId),
	_namespaceId(namespaceId),
	_localNameId(localNameId)
{
}


inline unsigned int QualifiedNameEntry::prefixId() const
{
	return _prefixId;
}


inline unsigned int QualifiedNameEntry::namespaceId() const
{
	return _namespaceId;
}


inline unsigned int QualifiedNameEntry::localNameId() const
{
	return _localNameId;
}


inline bool QualifiedNameEntry::operator == (const QualifiedNameEntry& other) const
{
	return _prefixId == other._prefixId && _namespaceId == other._namespaceId && _localNameId == other._localNameId;
}


inline bool QualifiedNameEntry::operator != (const QualifiedNameEntry& other) const
{
	return !(*this == other);
}


inline bool QualifiedNameEntry::operator < (const QualifiedNameEntry& other) const
{
	if (_prefixId != other._prefixId) return _prefixId < other._prefixId;
	if (_namespaceId != other._namespaceId) return _namespaceId < other._namespaceId;
	return _localNameId < other._localNameId;
}


} } // namespace Ixor::FastInfoset


namespace Poco {


template <>
struct HashFunction<Ixor::FastInfoset::QualifiedNameEntry>
	/// The hash of a qualified name in the name tables. Symmetric in the
	/// three indexes; names that differ by a permutation are told apart by
	/// operator == while probing.
{
	UInt32 operator () (const Ixor::FastInfoset::QualifiedNameEntry& entry, UInt32 tableSize) const
	{
		return ((entry.prefixId() ^ 1000003u) * (entry.namespaceId() ^ 1000003u) * (entry.localNameId() ^ 1000003u)) % tableSize;
	}
};


} // namespace Poco


#endif // FastInfoset_QualifiedNameEntry_INCLUDED
