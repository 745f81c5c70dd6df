#include "Ixor/FastInfoset/ValueListEncoding.h"
#include "AlgorithmTable.h"
#include "ValueListEncodingImpl.h"
#include <cmath>
#include <limits>


namespace Ixor {
namespace FastInfoset {


// The lists of fixed-width numbers; BoolEncoding and UUIDEncoding have
// layouts of their own and sources of their own.


template <>
struct ValueListTraits<ShortValues>: EncodingSupport::BigEndianNumbers<short>
{
	static constexpr unsigned int TYPE = AlgorithmTable::SHORT;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for ShortEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for ShortEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for Ixor::Int16 value";
};


template <>
struct ValueListTraits<IntValues>: EncodingSupport::BigEndianNumbers<int>
{
	static constexpr unsigned int TYPE = AlgorithmTable::INT;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for IntEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for IntEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for Ixor::Int32 value";

	// The one decoder to text of the family that reports a bad size as
	// FISException.
	typedef FISException TextSizeException;
};


template <>
struct ValueListTraits<LongValues>: EncodingSupport::BigEndianNumbers<long>
{
	static constexpr unsigned int TYPE = AlgorithmTable::LONG;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for LongEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for LongEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for Ixor::Int64 value";
};


template <>
struct ValueListTraits<FloatValues>: EncodingSupport::BigEndianNumbers<float>
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


template <>
struct ValueListTraits<DoubleValues>: EncodingSupport::BigEndianNumbers<double>
{
	static constexpr unsigned int TYPE = AlgorithmTable::DOUBLE;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for DoubleEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for DoubleEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for double value";
};


template class ValueListEncoding<ShortValues, short>;
template class ValueListEncoding<IntValues, int>;
template class ValueListEncoding<LongValues, long>;
template class ValueListEncoding<FloatValues, float>;
template class ValueListEncoding<DoubleValues, double>;


} } // namespace Ixor::FastInfoset
