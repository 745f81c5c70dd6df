//
// MapVocabulary.h
//
// Library: FastInfoset
// Module:  MapVocabulary
//


#ifndef FastInfoset_MapVocabulary_INCLUDED
#define FastInfoset_MapVocabulary_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Vocabulary.h"
#include <map>


namespace Ixor {
namespace FastInfoset {


template <class T>
class FastInfoset_API MapVocabulary: public Vocabulary<T>
	/// A table with an ordered map from value to index beside the entries;
	/// no capacity limit. A value is added once.
{
public:
	using Vocabulary<T>::index;
	using Vocabulary<T>::NOT_FOUND;

	explicit MapVocabulary(unsigned long capacity);
		/// A table with its placeholder at index 0; capacity is ignored.

	explicit MapVocabulary(DontInitialize);
		/// A table without placeholder.

	unsigned int index(const T& value, bool& found) override;
	unsigned int exists(const T& value, bool& found) const override;

	const T& value(unsigned int idx) const override;
		/// Asserts that idx is below size().

	std::size_t size() const override;
	bool empty() const override;
	Vocabulary<T>* subtract(const Vocabulary<T>& other) const override;
	Vocabulary<T>* clone() const override;

private:
	typedef std::map<T, unsigned int> Map;

	Map _map;
};


template <class T>
MapVocabulary<T>::MapVocabulary(unsigned long /*capacity*/)
{
	bool found;
	MapVocabulary<T>::index(T(), found);
}


template <class T>
MapVocabulary<T>::MapVocabulary(DontInitialize)
{
}


template <class T>
unsigned int MapVocabulary<T>::index(const T& value, bool& found)
{
	typename Map::iterator it = _map.lower_bound(value);
	if (it != _map.end() && !(value < it->first))
	{
		found = true;
		return it->second;
	}
	const unsigned int idx = static_cast<unsigned int>(this->_index.size());
	it = _map.emplace_hint(it, value, idx);
	try
	{
		this->_index.push_back(value);
	}
	catch (...)
	{
		_map.erase(it);
		throw;
	}
	found = false;
	return idx;
}


template <class T>
unsigned int MapVocabulary<T>::exists(const T& value, bool& found) const
{
	typename Map::const_iterator it = _map.find(value);
	found = it != _map.end();
	return found ? it->second : NOT_FOUND;
}


template <class T>
const T& MapVocabulary<T>::value(unsigned int idx) const
{
	poco_assert(this->_index.size() > idx);
	return this->_index[idx];
}


template <class T>
std::size_t MapVocabulary<T>::size() const
{
	return this->_index.size();
}


template <class T>
bool MapVocabulary<T>::empty() const
{
	return this->_index.empty();
}


template <class T>
Vocabulary<T>* MapVocabulary<T>::subtract(const Vocabulary<T>& other) const
{
	MapVocabulary<T>* pResult = new MapVocabulary<T>(DontInitialize());
	try
	{
		bool found;
		const std::size_t n = this->_index.size();
		for (std::size_t i = 0; i < n; ++i)
		{
			const T& entry = this->_index[i];
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


template <class T>
Vocabulary<T>* MapVocabulary<T>::clone() const
{
	return new MapVocabulary<T>(*this);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_MapVocabulary_INCLUDED
