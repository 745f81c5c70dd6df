//
// Utility.h
//
// Library: FastInfoset
// Module:  Utility
//


#ifndef FastInfoset_Utility_INCLUDED
#define FastInfoset_Utility_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <iosfwd>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API Utility
	/// Constants and octet masks shared by the bit streams and the codec.
{
public:
	static const int SIZEOFCHARINBIT  = 8;
	static const int SIZEOFINT16INBIT = 16;
	static const int SIZEOFINT32INBIT = 32;
	static const int SIZEOFINT64INBIT = 64;

	static const unsigned char pow2[8];
		/// Entry i is 1 shifted left by i.

	static const unsigned char revertedPow2[8];
		/// Entry i masks the bit at position i, counted from the most
		/// significant bit.

	static const unsigned char highBitMask[9];
		/// Entry n has the n most significant bits set.

	static const unsigned char lowBitMask[9];
		/// Entry n has the n least significant bits set.

	static void convertToFIS(std::istream& in, std::ostream& out, int options);
		/// Converter::convertToFIS(in, out, options, 0): no string but the
		/// empty one is indexed.

	static void convertToXML(std::istream& in, std::ostream& out);
		/// Converter::convertToXML(in, out, 1).

private:
	Utility() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_Utility_INCLUDED
