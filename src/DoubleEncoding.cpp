#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "AlgorithmTable.h"
#include "ValueListEncodingImpl.h"


namespace Ixor {
namespace FastInfoset {


template <>
struct ValueListTraits<DoubleEncoding>: EncodingSupport::BigEndianNumbers<double>
{
	static constexpr unsigned int TYPE = AlgorithmTable::DOUBLE;
	static constexpr const char* EMPTY_DATA   = "Illegal (empty) data for DoubleEncoding";
	static constexpr const char* VALUE_STRING = "Illegal value string for DoubleEncoding";
	static constexpr const char* SIZE_ENTRY   = "Illegal size entry for double value";
};


template class ValueListEncoding<DoubleEncoding, double>;


DoubleEncoding::DoubleEncoding()
{
}


DoubleEncoding::DoubleEncoding(double value):
	ValueListEncoding(value)
{
}


DoubleEncoding::DoubleEncoding(const std::vector<double>& values):
	ValueListEncoding(values)
{
}


DoubleEncoding::DoubleEncoding(const std::string& text):
	ValueListEncoding(text)
{
}


DoubleEncoding::~DoubleEncoding()
{
}


} } // namespace Ixor::FastInfoset
