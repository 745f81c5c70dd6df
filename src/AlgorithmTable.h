//
// AlgorithmTable.h
//
// Library: FastInfoset
// Module:  AlgorithmTable
//
// The built-in encoding algorithms, once: their indexes, names and
// functions, from which the encoding and the decoding registries are
// filled. Internal: this header is not installed.
//


#ifndef FastInfoset_AlgorithmTable_INCLUDED
#define FastInfoset_AlgorithmTable_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"


namespace Ixor {
namespace FastInfoset {


class AlgorithmTable
	/// The algorithms a document may name by index without declaring them.
	/// Indexes 0 and 11 to 31 have none.
{
public:
	enum Index
	{
		HEXADECIMAL = 1,
		BASE64      = 2,
		SHORT       = 3,
		INT         = 4,
		LONG        = 5,
		BOOLEAN     = 6,
		FLOAT       = 7,
		DOUBLE      = 8,
		UUID        = 9,
		CDATA       = 10,
		LAST        = CDATA
	};

	struct Entry
	{
		unsigned int  index;
		const char*   name;     // "int", "base64", ...: for listings and messages
		EncodeMethod  encode;
		CheckMethod   check;
		DecodeMethod  decode;
	};

	static const Entry* begin();
	static const Entry* end();
		/// The entries; each knows its index.

private:
	static const Entry ENTRIES[LAST];
};


//
// inlines
//
inline const AlgorithmTable::Entry* AlgorithmTable::begin()
{
	return ENTRIES;
}


inline const AlgorithmTable::Entry* AlgorithmTable::end()
{
	return ENTRIES + LAST;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_AlgorithmTable_INCLUDED
