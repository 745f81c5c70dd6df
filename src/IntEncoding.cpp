#include "Ixor/FastInfoset/IntEncoding.h"
#include "AlgorithmTable.h"
#include "ValueListEncodingImpl.h"


namespace Ixor {
namespace FastInfoset {


template <>
struct ValueListTraits<IntEncoding>: EncodingSupport::BigEndianNumbers<int>
{
	static constexpr unsigned int TYPE = AlgorithmTable::INT;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for IntEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for IntEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for Ixor::Int32 value";

	// The one decoder to text of the family that reports a bad size as
	// FISException.
	typedef FISException TextSizeException;
};


template class ValueListEncoding<IntEncoding, int>;


IntEncoding::IntEncoding()
{
}


IntEncoding::IntEncoding(int value):
	ValueListEncoding(value)
{
}


IntEncoding::IntEncoding(const std::vector<int>& values):
	ValueListEncoding(values)
{
}


IntEncoding::IntEncoding(const std::string& text):
	ValueListEncoding(text)
{
}


IntEncoding::~IntEncoding()
{
}


} } // namespace Ixor::FastInfoset
