#include "Ixor/FastInfoset/ShortEncoding.h"
#include "AlgorithmTable.h"
#include "ValueListEncodingImpl.h"


namespace Ixor {
namespace FastInfoset {


template <>
struct ValueListTraits<ShortEncoding>: EncodingSupport::BigEndianNumbers<short>
{
	static constexpr unsigned int TYPE = AlgorithmTable::SHORT;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for ShortEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for ShortEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for Ixor::Int16 value";
};


template class ValueListEncoding<ShortEncoding, short>;


ShortEncoding::ShortEncoding()
{
}


ShortEncoding::ShortEncoding(short value):
	ValueListEncoding(value)
{
}


ShortEncoding::ShortEncoding(const std::vector<short>& values):
	ValueListEncoding(values)
{
}


ShortEncoding::ShortEncoding(const std::string& text):
	ValueListEncoding(text)
{
}


ShortEncoding::~ShortEncoding()
{
}


} } // namespace Ixor::FastInfoset
