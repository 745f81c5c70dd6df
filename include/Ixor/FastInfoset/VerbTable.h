//
// VerbTable.h
//
// Library: FastInfoset
// Module:  VerbTable
//


#ifndef FastInfoset_VerbTable_INCLUDED
#define FastInfoset_VerbTable_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <algorithm>
#include <cstring>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>
#if defined(_MSC_VER)
#include <intrin.h>
#endif


namespace Ixor {
namespace FastInfoset {


namespace VerbTableDetail {


inline void assignText(std::string& to, const char* pText, std::size_t length)
	/// to.assign(pText, length) where pText is not inside to. A value no
	/// longer than the one it replaces is copied in place: assign() is a
	/// call into the library, and the strings that take each other's place
	/// are mostly of a few lengths.
{
	if (length > to.size())
	{
		// Cheaper than assign(), which allows for text inside the string.
		to.clear();
		to.append(pText, length);
		return;
	}
	to.resize(length);
	if (length > 0) std::memcpy(&to[0], pText, length);
}


template <class T, class... Args>
inline void assignText(T& to, const Args&... args)
{
	to.assign(args...);
}


} // namespace VerbTableDetail


template <class T>
class VerbTable
	/// The entry store of a vocabulary table: entries in chunks of 256, 512,
	/// 1024, ... entries. A stored entry never moves, so references to it
	/// stay valid until the table is destroyed; growing copies no entry.
{
public:
	static const std::size_t FIRST_CHUNK = 256;

	VerbTable();

	VerbTable(const VerbTable& other);
		/// Deep copy of every entry.

	VerbTable(VerbTable&& other) noexcept;

	VerbTable& operator = (const VerbTable& other);
	VerbTable& operator = (VerbTable&& other) noexcept;

	~VerbTable();

	void swap(VerbTable& other) noexcept;

	void push_back(const T& value);
		/// Appends value; its index is the size before.

	template <class... Args>
	T& emplace_back(const Args&... args);
		/// Appends T(args...) and returns it. A place that truncate() freed
		/// takes it by assignment (a string's assign() for other arguments
		/// than a T), so that it keeps its memory.

	T& extend();
		/// Appends an entry and returns it for the caller to set: a place
		/// that truncate() freed as it was left, or T().

	std::size_t size() const;
		/// The number of entries.

	bool empty() const;
		/// True when the table holds no entry.

	void truncate(std::size_t size);
		/// Forgets the entries from index size on (nothing when size is not
		/// below size()). Their storage, a string's buffer included, is kept
		/// and taken by the entries appended next, so that a table filled
		/// again to where it was allocates nothing.

	T& at(std::size_t i);
	const T& at(std::size_t i) const;
		/// The entry at index i. Throws std::out_of_range "index out of
		/// range" when i is not below size().

	T& operator [] (std::size_t i);
	const T& operator [] (std::size_t i) const;
		/// Same as at().

private:
	typedef std::vector<T> Chunk;

	static std::size_t chunkCapacity(std::size_t chunk);
	static std::size_t chunkOf(std::size_t i, std::size_t& offset);
	static int highestBit(std::size_t value);
	static void assign(T& place, const T& value);
	template <class... Args>
	static void assign(T& place, const Args&... args);

	std::vector<std::unique_ptr<Chunk>> _chunks;
	std::size_t _size;
};


template <class T>
const std::size_t VerbTable<T>::FIRST_CHUNK;


//
// inlines
//
template <class T>
inline std::size_t VerbTable<T>::chunkCapacity(std::size_t chunk)
{
	return FIRST_CHUNK << chunk;
}


template <class T>
inline int VerbTable<T>::highestBit(std::size_t value)
	/// value is not 0.
{
#if defined(__GNUC__) || defined(__clang__)
	return static_cast<int>(sizeof(unsigned long long) * 8 - 1) - __builtin_clzll(static_cast<unsigned long long>(value));
#elif defined(_MSC_VER) && defined(_WIN64)
	unsigned long bit;
	_BitScanReverse64(&bit, value);
	return static_cast<int>(bit);
#else
	int bit = 0;
	while (value >>= 1) ++bit;
	return bit;
#endif
}


template <class T>
inline std::size_t VerbTable<T>::chunkOf(std::size_t i, std::size_t& offset)
	/// Chunk k starts at index 256 * (2^k - 1), so (i / 256 + 1) has its
	/// highest bit at k: no walk over the chunks is needed.
{
	const std::size_t chunk = static_cast<std::size_t>(highestBit((i / FIRST_CHUNK) + 1));
	offset = i - (chunkCapacity(chunk) - FIRST_CHUNK);
	return chunk;
}


template <class T>
inline std::size_t VerbTable<T>::size() const
{
	return _size;
}


template <class T>
inline bool VerbTable<T>::empty() const
{
	return _size == 0;
}


template <class T>
void VerbTable<T>::truncate(std::size_t size)
{
	if (size < _size) _size = size;
}


template <class T>
inline T& VerbTable<T>::at(std::size_t i)
{
	if (i >= _size) throw std::out_of_range("index out of range");
	std::size_t offset;
	const std::size_t chunk = chunkOf(i, offset);
	return (*_chunks[chunk])[offset];
}


template <class T>
inline const T& VerbTable<T>::at(std::size_t i) const
{
	if (i >= _size) throw std::out_of_range("index out of range");
	std::size_t offset;
	const std::size_t chunk = chunkOf(i, offset);
	return (*_chunks[chunk])[offset];
}


template <class T>
inline T& VerbTable<T>::operator [] (std::size_t i)
{
	return at(i);
}


template <class T>
inline const T& VerbTable<T>::operator [] (std::size_t i) const
{
	return at(i);
}


template <class T>
VerbTable<T>::VerbTable():
	_size(0)
{
}


template <class T>
VerbTable<T>::VerbTable(const VerbTable& other):
	_size(0)
{
	_chunks.reserve(other._chunks.size());
	for (std::size_t k = 0; k < other._chunks.size(); ++k)
	{
		// A copied vector may get less capacity than the policy wants; the
		// reserve keeps later appends from moving the copied entries.
		std::unique_ptr<Chunk> pChunk(new Chunk);
		pChunk->reserve(chunkCapacity(k));
		// Entries forgotten by truncate() are not copied.
		const std::size_t first = chunkCapacity(k) - FIRST_CHUNK;
		if (first >= other._size) break;
		const std::size_t count = std::min(other._chunks[k]->size(), other._size - first);
		pChunk->insert(pChunk->end(), other._chunks[k]->begin(), other._chunks[k]->begin() + count);
		_chunks.push_back(std::move(pChunk));
	}
	_size = other._size;
}


template <class T>
VerbTable<T>::VerbTable(VerbTable&& other) noexcept:
	_chunks(std::move(other._chunks)),
	_size(other._size)
{
	other._chunks.clear();
	other._size = 0;
}


template <class T>
VerbTable<T>& VerbTable<T>::operator = (const VerbTable& other)
{
	if (&other != this)
	{
		VerbTable tmp(other);
		swap(tmp);
	}
	return *this;
}


template <class T>
VerbTable<T>& VerbTable<T>::operator = (VerbTable&& other) noexcept
{
	VerbTable tmp(std::move(other));
	swap(tmp);
	return *this;
}


template <class T>
VerbTable<T>::~VerbTable()
{
}


template <class T>
void VerbTable<T>::swap(VerbTable& other) noexcept
{
	_chunks.swap(other._chunks);
	std::swap(_size, other._size);
}


template <class T>
inline void VerbTable<T>::push_back(const T& value)
{
	emplace_back(value);
}


template <class T>
T& VerbTable<T>::extend()
{
	std::size_t offset;
	const std::size_t chunk = chunkOf(_size, offset);
	if (chunk < _chunks.size() && offset < _chunks[chunk]->size())
	{
		++_size;
		return (*_chunks[chunk])[offset];
	}
	return emplace_back(T());
}


template <class T>
inline void VerbTable<T>::assign(T& place, const T& value)
{
	place = value;
}


template <class T>
template <class... Args>
inline void VerbTable<T>::assign(T& place, const Args&... args)
{
	VerbTableDetail::assignText(place, args...);
}


template <class T>
template <class... Args>
T& VerbTable<T>::emplace_back(const Args&... args)
{
	std::size_t offset;
	const std::size_t chunk = chunkOf(_size, offset);
	if (chunk < _chunks.size() && offset < _chunks[chunk]->size())
	{
		// A place that truncate() freed; the size grows only once it is set.
		T& place = (*_chunks[chunk])[offset];
		assign(place, args...);
		++_size;
		return place;
	}
	const std::size_t chunks = _chunks.size();
	if (chunks == 0 || _chunks.back()->size() == chunkCapacity(chunks - 1))
	{
		std::unique_ptr<Chunk> pChunk(new Chunk);
		pChunk->reserve(chunkCapacity(chunks));
		pChunk->emplace_back(args...);
		_chunks.push_back(std::move(pChunk));
	}
	else
	{
		// Below the reserved capacity: emplace_back never reallocates.
		_chunks.back()->emplace_back(args...);
	}
	++_size;
	return _chunks.back()->back();
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_VerbTable_INCLUDED
