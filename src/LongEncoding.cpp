#include "Ixor/FastInfoset/LongEncoding.h"
#include "AlgorithmTable.h"
#include "ValueListEncodingImpl.h"


namespace Ixor {
namespace FastInfoset {


template <>
struct ValueListTraits<LongEncoding>: EncodingSupport::BigEndianNumbers<long>
{
	static constexpr unsigned int TYPE = AlgorithmTable::LONG;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for LongEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for LongEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for Ixor::Int64 value";
};


template class ValueListEncoding<LongEncoding, long>;


LongEncoding::LongEncoding()
{
}


LongEncoding::LongEncoding(long value):
	ValueListEncoding(value)
{
}


LongEncoding::LongEncoding(const std::vector<long>& values):
	ValueListEncoding(values)
{
}


LongEncoding::LongEncoding(const std::string& text):
	ValueListEncoding(text)
{
}


LongEncoding::~LongEncoding()
{
}


} } // namespace Ixor::FastInfoset
