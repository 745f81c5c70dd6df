#include "Ixor/FastInfoset/FloatEncoding.h"
#include "AlgorithmTable.h"
#include "ValueListEncodingImpl.h"
#include <cmath>
#include <limits>


namespace Ixor {
namespace FastInfoset {


template <>
struct ValueListTraits<FloatEncoding>: EncodingSupport::BigEndianNumbers<float>
{
	static constexpr unsigned int TYPE = AlgorithmTable::FLOAT;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for FloatEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for FloatEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for float value";

	static bool parseValue(const std::string& piece, std::string& canonical, float& value)
	{
		// The round trip goes through the double formatter, the text
		// produced through the float one; both are as the format requires.
		double parsed = 0;
		if (!EncodingSupport::parseNumber(piece, canonical, parsed)) return false;
		// Finite zero, negatives and subnormals are refused as text on
		// purpose; typed values skip this test. NaN and the infinities are
		// floats as much as doubles.
		if (std::isfinite(parsed)
			&& !(parsed >= std::numeric_limits<float>::min() && parsed <= std::numeric_limits<float>::max())) return false;
		value = static_cast<float>(parsed);
		return true;
	}
};


template class ValueListEncoding<FloatEncoding, float>;


FloatEncoding::FloatEncoding()
{
}


FloatEncoding::FloatEncoding(float value):
	ValueListEncoding(value)
{
}


FloatEncoding::FloatEncoding(const std::vector<float>& values):
	ValueListEncoding(values)
{
}


FloatEncoding::FloatEncoding(const std::string& text):
	ValueListEncoding(text)
{
}


FloatEncoding::~FloatEncoding()
{
}


} } // namespace Ixor::FastInfoset
