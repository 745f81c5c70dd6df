//
// VectorVocabulary.h
//
// Library: FastInfoset
// Module:  VectorVocabulary
//


#ifndef FastInfoset_VectorVocabulary_INCLUDED
#define FastInfoset_VectorVocabulary_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Vocabulary.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


template <class T>
class FastInfoset_API VectorVocabulary: public Vocabulary<T>
	/// An append-only table for reading: every index() adds the value under
	/// the next index, as a document's literals require. Lookups by value
	/// scan the table.
{
public:
	using Vocabulary<T>::index;
	using Vocabulary<T>::NOT_FOUND;

	explicit VectorVocabulary(unsigned long capacity);
		/// A table with its placeholder at index 0; capacity is ignored.

	explicit VectorVocabulary(DontInitialize);
		/// A table without placeholder.

	unsigned int index(const T& value, bool& found) override;
		/// Appends value; found is always false.

	template <class... Args>
	const T& append(const Args&... args);
		/// Appends T(args...) under the next index, as index() does,
		/// without a T built first: a reader adds a literal straight from
		/// its input. Returns the entry.

	unsigned int exists(const T& value, bool& found) const override;
		/// The first index that holds value.

	const T& value(unsigned int idx) const override;
		/// Throws std::out_of_range "index out of range" when idx is not
		/// below size().

	std::size_t size() const override;

	void truncate(std::size_t size);
		/// Drops the entries from index size on, keeping their storage for
		/// the entries added next: a table that each document of a series
		/// fills anew from the same start.
	bool empty() const override;
	Vocabulary<T>* subtract(const Vocabulary<T>& other) const override;
	Vocabulary<T>* clone() const override;
};


template <class T>
VectorVocabulary<T>::VectorVocabulary(unsigned long /*capacity*/)
{
	this->_index.push_back(T());
}


template <class T>
VectorVocabulary<T>::VectorVocabulary(DontInitialize)
{
}


template <class T>
unsigned int VectorVocabulary<T>::index(const T& value, bool& found)
{
	this->_index.push_back(value);
	found = false;
	return static_cast<unsigned int>(this->_index.size() - 1);
}


template <class T>
template <class... Args>
inline const T& VectorVocabulary<T>::append(const Args&... args)
{
	return this->_index.emplace_back(args...);
}


template <class T>
unsigned int VectorVocabulary<T>::exists(const T& value, bool& found) const
{
	const std::size_t n = this->_index.size();
	for (std::size_t i = 0; i < n; ++i)
	{
		if (this->_index[i] == value)
		{
			found = true;
			return static_cast<unsigned int>(i);
		}
	}
	found = false;
	return NOT_FOUND;
}


template <class T>
const T& VectorVocabulary<T>::value(unsigned int idx) const
{
	return this->_index[idx];
}


template <class T>
std::size_t VectorVocabulary<T>::size() const
{
	return this->_index.size();
}


template <class T>
bool VectorVocabulary<T>::empty() const
{
	return this->_index.empty();
}


namespace VectorVocabularyDetail
{
	template <class T>
	inline void releaseLong(T&)
	{
	}

	inline void releaseLong(std::string& dropped)
		/// What one document added stays for the next as spare storage, but
		/// only as much as short strings need.
	{
		if (dropped.capacity() > 256) std::string().swap(dropped);
	}
}


template <class T>
void VectorVocabulary<T>::truncate(std::size_t size)
{
	for (std::size_t i = size; i < this->_index.size(); ++i) VectorVocabularyDetail::releaseLong(this->_index[i]);
	this->_index.truncate(size);
}


template <class T>
Vocabulary<T>* VectorVocabulary<T>::subtract(const Vocabulary<T>& other) const
{
	return this->fillDifference(new VectorVocabulary<T>(DontInitialize()), other);
}


template <class T>
Vocabulary<T>* VectorVocabulary<T>::clone() const
{
	return new VectorVocabulary<T>(*this);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_VectorVocabulary_INCLUDED
