#include "Ixor/FastInfoset/HexEncoding.h"
#include "AlgorithmTable.h"
#include "OctetEncodingImpl.h"
#include "Poco/HexBinaryDecoder.h"
#include "Poco/HexBinaryEncoder.h"


namespace Ixor {
namespace FastInfoset {


template <>
struct OctetTraits<HexText>
{
	static constexpr unsigned int TYPE = AlgorithmTable::HEXADECIMAL;
	static constexpr const char* ZERO_LENGTH  = "Zero-length data for hex encoding";
	static constexpr const char* INVALID_DATA = "Invalid hex-encoded data";

	typedef Ixor::HexBinaryDecoder TextDecoder;
	typedef Ixor::HexBinaryEncoder TextEncoder;

	static void setUp(TextEncoder& encoder)
	{
		encoder.rdbuf()->setLineLength(0);
		encoder.rdbuf()->setUppercase(true);
	}

	static std::size_t maxOctets(std::size_t length)
	{
		// Two digits give one octet.
		return length/2;
	}

	static std::size_t textLength(std::size_t count)
	{
		return 2*count;
	}
};


template class OctetEncoding<HexText>;


} } // namespace Ixor::FastInfoset
