//
// HexEncoding.h
//
// Library: FastInfoset
// Module:  HexEncoding
//


#ifndef FastInfoset_HexEncoding_INCLUDED
#define FastInfoset_HexEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/OctetEncoding.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API HexEncoding;
extern template class OctetEncoding<HexEncoding>;


class FastInfoset_API HexEncoding: public OctetEncoding<HexEncoding>
	/// Binary data with a hexadecimal text form (algorithm 1). octets()
	/// holds the raw octets, which are also the octets written; content()
	/// is the upper-case hexadecimal text, two digits per octet and nothing
	/// between them.
	///
	/// Its messages are "Zero-length data for hex encoding" and "Invalid
	/// hex-encoded data".
{
public:
	typedef Ixor::AutoPtr<HexEncoding> Ptr;

	HexEncoding();
		/// No data; the decode function reads into its octets.

	HexEncoding(const char* data, std::size_t length);
		/// Copies the octets. Throws FISEncodingException "Zero-length data
		/// for hex encoding" when length is 0.

	explicit HexEncoding(const std::string& text);
		/// Decodes hexadecimal text. Throws FISEncodingException "Zero-length
		/// data for hex encoding" for a text that yields no octets and
		/// "Invalid hex-encoded data" for a text that the host decoder
		/// refuses.

protected:
	~HexEncoding();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_HexEncoding_INCLUDED
