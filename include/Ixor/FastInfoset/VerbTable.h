//
// VerbTable.h
//
// Library: FastInfoset
// Module:  VerbTable
//


#ifndef FastInfoset_VerbTable_INCLUDED
#define FastInfoset_VerbTable_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
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


template <class T>
class VerbTable
	/// The entry store of a vocabulary table: entries in chunks of 256, 512,
	/// 1024, ... entries. A stored entry never moves, so references to it
	/// stay valid until the table is destroyed; growing copies no entry.
	///
	/// A table cut back by truncate() keeps the entries it drops as spare
	/// objects, and push_back() assigns into them: a table that is filled
	/// and cut back again and again, once per document, allocates nothing
	/// once it has reached its size.
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

	T& extend();
		/// Appends an entry and returns it for the caller to set: a spare
		/// object as truncate() left it, or T().

	std::size_t size() const;
		/// The number of entries.

	bool empty() const;
		/// True when the table holds no entry.

	void truncate(std::size_t size);
		/// Drops the entries from index size on; the indexes below keep
		/// their entries, and references to them stay valid. Long strings
		/// among the dropped entries are released.

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
	Chunk& chunkFor(std::size_t i, std::size_t& offset);
	static void release(std::string& dropped);
	template <class U> static void release(U&) {}

	std::vector<std::unique_ptr<Chunk>> _chunks;   // each holds the entries and the spare objects after them
	std::size_t _size;                              // the entries
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
	// Only the entries are copied, not the other's spare objects.
	std::size_t left = other._size;
	_chunks.reserve(other._chunks.size());
	for (std::size_t k = 0; k < other._chunks.size() && left > 0; ++k)
	{
		// A copied vector may get less capacity than the policy wants; the
		// reserve keeps later appends from moving the copied entries.
		const Chunk& source = *other._chunks[k];
		const std::size_t count = left < source.size() ? left : source.size();
		std::unique_ptr<Chunk> pChunk(new Chunk);
		pChunk->reserve(chunkCapacity(k));
		pChunk->insert(pChunk->end(), source.begin(), source.begin() + static_cast<std::ptrdiff_t>(count));
		_chunks.push_back(std::move(pChunk));
		left -= count;
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
void VerbTable<T>::push_back(const T& value)
{
	std::size_t offset;
	Chunk& entries = chunkFor(_size, offset);
	// A spare object left by truncate() keeps its storage; a new entry is
	// copied in place, below the reserved capacity, so nothing moves.
	if (offset < entries.size()) entries[offset] = value;
	else entries.push_back(value);
	// Counted once stored, so that a failed copy adds nothing.
	++_size;
}


template <class T>
T& VerbTable<T>::extend()
{
	std::size_t offset;
	Chunk& entries = chunkFor(_size, offset);
	if (offset == entries.size()) entries.emplace_back();
	++_size;
	return entries[offset];
}


template <class T>
typename VerbTable<T>::Chunk& VerbTable<T>::chunkFor(std::size_t i, std::size_t& offset)
	/// The chunk that holds index i, made when it is the next one.
{
	const std::size_t chunk = chunkOf(i, offset);
	if (chunk == _chunks.size())
	{
		std::unique_ptr<Chunk> pChunk(new Chunk);
		pChunk->reserve(chunkCapacity(chunk));
		_chunks.push_back(std::move(pChunk));
	}
	return *_chunks[chunk];
}


template <class T>
void VerbTable<T>::truncate(std::size_t size)
{
	if (size >= _size) return;
	std::size_t offset;
	std::size_t chunk = chunkOf(size, offset);
	for (std::size_t i = size; i < _size; ++chunk, offset = 0)
	{
		Chunk& entries = *_chunks[chunk];
		for (; offset < entries.size() && i < _size; ++offset, ++i) release(entries[offset]);
	}
	_size = size;
}


template <class T>
inline void VerbTable<T>::release(std::string& dropped)
	/// What one document added stays for the next as spare capacity, but
	/// only as much as short strings need.
{
	if (dropped.capacity() > 256) std::string().swap(dropped);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_VerbTable_INCLUDED
