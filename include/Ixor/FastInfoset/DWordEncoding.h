//
// DWordEncoding.h
//
// Library: FastInfoset
// Module:  DWordEncoding
//


#ifndef FastInfoset_DWordEncoding_INCLUDED
#define FastInfoset_DWordEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/OctetEncoding.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API DWordEncoding;
extern template class OctetEncoding<DWordEncoding>;


class FastInfoset_API DWordEncoding: public OctetEncoding<DWordEncoding>
	/// Binary data with a base64 text form (algorithm 2). octets() holds the
	/// raw octets, which are also the octets written; content() is the
	/// base64 text in one line. The writer's binaryData() produces these
	/// values.
	///
	/// Its messages are "Zero-length data for dword encoding" and "Invalid
	/// base64-encoded data".
{
public:
	typedef Ixor::AutoPtr<DWordEncoding> Ptr;

	DWordEncoding();
		/// No data; the decode function reads into its octets.

	DWordEncoding(const char* data, std::size_t length);
		/// Copies the octets. Throws FISEncodingException "Zero-length data
		/// for dword encoding" when length is 0.

	explicit DWordEncoding(const std::string& text);
		/// Decodes base64 text. Throws FISEncodingException "Zero-length data
		/// for dword encoding" for a text that yields no octets and "Invalid
		/// base64-encoded data" for a text that the host decoder refuses.

protected:
	~DWordEncoding();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_DWordEncoding_INCLUDED
