//
// VocabularyHash.h
//
// Library: FastInfoset
// Module:  VocabularyHash
//


#ifndef FastInfoset_VocabularyHash_INCLUDED
#define FastInfoset_VocabularyHash_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/QualifiedNameEntry.h"
#include <cstring>
#include <string>


namespace Ixor {
namespace FastInfoset {


template <class T>
struct VocabularyHash;
	/// The 32-bit hash by which the hash and map tables find their values.
	/// Hash values never reach a document, so any deterministic hash
	/// serves; these take names and short strings eight octets at a time.


template <>
struct VocabularyHash<std::string>
{
	UInt32 operator () (const std::string& value) const
	{
		return bytes(value.data(), value.size());
	}

	FastInfoset_ALWAYS_INLINE static bool equal(const std::string& stored, const char* p, std::size_t n)
		/// Whether stored holds the n octets at p. Names and short strings,
		/// the common case, are compared in at most two word loads each.
	{
		if (stored.size() != n) return false;
		const char* q = stored.data();
		if (n > 16) return std::memcmp(q, p, n) == 0;
		if (n >= 8)
		{
			UInt64 a, b, c, d;
			std::memcpy(&a, p, 8);
			std::memcpy(&b, q, 8);
			std::memcpy(&c, p + n - 8, 8);
			std::memcpy(&d, q + n - 8, 8);
			return ((a ^ b) | (c ^ d)) == 0;
		}
		if (n >= 4)
		{
			UInt32 a, b, c, d;
			std::memcpy(&a, p, 4);
			std::memcpy(&b, q, 4);
			std::memcpy(&c, p + n - 4, 4);
			std::memcpy(&d, q + n - 4, 4);
			return ((a ^ b) | (c ^ d)) == 0;
		}
		for (std::size_t i = 0; i < n; ++i)
		{
			if (p[i] != q[i]) return false;
		}
		return true;
	}

	FastInfoset_ALWAYS_INLINE static UInt32 bytes(const char* p, std::size_t n)
		/// The hash of the string of n octets at p.
	{
		UInt64 h = 0x9E3779B97F4A7C15ull ^ (static_cast<UInt64>(n) * 0xFF51AFD7ED558CCDull);
		while (n >= 8)
		{
			UInt64 k;
			std::memcpy(&k, p, 8);
			h ^= k * 0x87C37B91114253D5ull;
			h = ((h << 31) | (h >> 33)) * 0x4CF5AD432745937Full;
			p += 8;
			n -= 8;
		}
		// The last 1 to 7 octets in at most two loads, which overlap when the
		// tail is shorter than their sum.
		UInt64 k = 0;
		if (n >= 4)
		{
			UInt32 first;
			UInt32 last;
			std::memcpy(&first, p, 4);
			std::memcpy(&last, p + n - 4, 4);
			k = (static_cast<UInt64>(first) << 32) | last;
		}
		else if (n > 0)
		{
			k = (static_cast<UInt64>(static_cast<unsigned char>(p[0])) << 16)
				| (static_cast<UInt64>(static_cast<unsigned char>(p[n >> 1])) << 8)
				| static_cast<unsigned char>(p[n - 1]);
		}
		h ^= k * 0x87C37B91114253D5ull;
		h = (h ^ (h >> 33)) * 0xFF51AFD7ED558CCDull;
		h ^= h >> 33;
		return static_cast<UInt32>(h ^ (h >> 32));
	}
};


template <>
struct VocabularyHash<QualifiedNameEntry>
{
	UInt32 operator () (const QualifiedNameEntry& value) const
	{
		UInt64 h = (static_cast<UInt64>(value.prefixId()) << 42) ^ (static_cast<UInt64>(value.namespaceId()) << 21) ^ value.localNameId();
		h = (h ^ (h >> 31)) * 0x7FB5D329728EA185ull;
		h ^= h >> 27;
		return static_cast<UInt32>(h ^ (h >> 32));
	}
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_VocabularyHash_INCLUDED
