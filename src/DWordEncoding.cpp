#include "Ixor/FastInfoset/DWordEncoding.h"
#include "AlgorithmTable.h"
#include "OctetEncodingImpl.h"
#include "Poco/Base64Decoder.h"
#include "Poco/Base64Encoder.h"


namespace Ixor {
namespace FastInfoset {


template <>
struct OctetTraits<Base64Text>
{
	static constexpr unsigned int TYPE = AlgorithmTable::BASE64;
	static constexpr const char* ZERO_LENGTH  = "Zero-length data for dword encoding";
	static constexpr const char* INVALID_DATA = "Invalid base64-encoded data";

	typedef Ixor::Base64Decoder TextDecoder;
	typedef Ixor::Base64Encoder TextEncoder;

	static void setUp(TextEncoder& encoder)
	{
		encoder.rdbuf()->setLineLength(0);
	}

	static std::size_t maxOctets(std::size_t length)
	{
		// Four characters give at most three octets.
		return (length + 3)/4*3;
	}

	static std::size_t textLength(std::size_t count)
	{
		return (count + 2)/3*4;
	}
};


template class OctetEncoding<Base64Text>;


} } // namespace Ixor::FastInfoset
