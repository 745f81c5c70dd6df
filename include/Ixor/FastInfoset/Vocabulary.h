//
// Vocabulary.h
//
// Library: FastInfoset
// Module:  Vocabulary
//


#ifndef FastInfoset_Vocabulary_INCLUDED
#define FastInfoset_Vocabulary_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/VerbTable.h"
#include <cstddef>


namespace Ixor {
namespace FastInfoset {


template <class T>
class FastInfoset_API Vocabulary
	/// One indexed table of a document vocabulary: strings or qualified
	/// names by their index in the document.
	///
	/// Tables built normally hold a placeholder, T(), at index 0, so that
	/// the first real entry gets index 1, as in the format. Tables built
	/// with DontInitialize (the results of subtract()) have none.
{
public:
	static const unsigned int NOT_FOUND = 0xFFFFFFFF;
		/// The index that reports a miss.

	virtual ~Vocabulary();

	const VerbTable<T>& index() const;
		/// All entries in index order.

	virtual unsigned int index(const T& value, bool& found) = 0;
		/// The index of value, which is added when absent; found tells
		/// whether it was there before.

	virtual unsigned int exists(const T& value, bool& found) const = 0;
		/// The index of value, or NOT_FOUND; never adds.

	virtual const T& value(unsigned int idx) const = 0;
		/// The entry at idx. The reference stays valid as long as the table.

	virtual std::size_t size() const = 0;
		/// The number of entries, the placeholder included.

	virtual bool empty() const = 0;
		/// True only for a table without placeholder and without entries.

	virtual Vocabulary<T>* subtract(const Vocabulary<T>& other) const = 0;
		/// A new table of the same kind, owned by the caller, holding from
		/// index 0 the entries of this table that other lacks, in this
		/// table's order.

	virtual Vocabulary<T>* clone() const = 0;
		/// A deep copy, owned by the caller.

protected:
	Vocabulary();
	Vocabulary(const Vocabulary& other);
	Vocabulary& operator = (const Vocabulary& other);

	Vocabulary<T>* fillDifference(Vocabulary<T>* pResult, const Vocabulary<T>& other) const;
		/// subtract() for every kind: adds to the empty pResult the entries
		/// that other lacks and returns it; deletes it if that throws.

	VerbTable<T> _index;
};


template <class T>
const unsigned int Vocabulary<T>::NOT_FOUND;


//
// inlines
//
template <class T>
inline const VerbTable<T>& Vocabulary<T>::index() const
{
	return _index;
}


template <class T>
Vocabulary<T>::Vocabulary()
{
}


template <class T>
Vocabulary<T>::Vocabulary(const Vocabulary& other):
	_index(other._index)
{
}


template <class T>
Vocabulary<T>& Vocabulary<T>::operator = (const Vocabulary& other)
{
	_index = other._index;
	return *this;
}


template <class T>
Vocabulary<T>::~Vocabulary()
{
}


template <class T>
Vocabulary<T>* Vocabulary<T>::fillDifference(Vocabulary<T>* pResult, const Vocabulary<T>& other) const
{
	try
	{
		bool found;
		const std::size_t n = _index.size();
		for (std::size_t i = 0; i < n; ++i)
		{
			const T& entry = _index[i];
			other.exists(entry, found);
			if (!found) pResult->index(entry, found);
		}
	}
	catch (...)
	{
		delete pResult;
		throw;
	}
	return pResult;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_Vocabulary_INCLUDED
