#include "PendingValues.h"
#include "Ixor/FastInfoset/BoolEncoding.h"
#include "Ixor/FastInfoset/DWordEncoding.h"
#include "Ixor/FastInfoset/DoubleEncoding.h"
#include "Ixor/FastInfoset/FloatEncoding.h"
#include "Ixor/FastInfoset/IntEncoding.h"
#include "Ixor/FastInfoset/LongEncoding.h"
#include "Ixor/FastInfoset/ShortEncoding.h"
#include "Ixor/FastInfoset/UUIDEncoding.h"


namespace Ixor {
namespace FastInfoset {


template <class E, class... Values>
void PendingValues::append(unsigned int type, const Values&... values)
	/// What merging a new E of values into the last run would do, without
	/// the new object.
{
	if (!_runs.empty() && _runs.back()->type() == type)
	{
		static_cast<E&>(*_runs.back()).append(values...);
		return;
	}
	Ixor::AutoPtr<Encoding>& spare = _spares[type];
	if (spare && spare->referenceCount() == 1)
	{
		E& value = static_cast<E&>(*spare);
		value.clear();
		value.append(values...);
	}
	else spare = new E(values...);
	_runs.push_back(spare);
}


void PendingValues::append(short value)
{
	append<ShortEncoding>(AlgorithmTable::SHORT, value);
}


void PendingValues::append(int value)
{
	append<IntEncoding>(AlgorithmTable::INT, value);
}


void PendingValues::append(long value)
{
	append<LongEncoding>(AlgorithmTable::LONG, value);
}


void PendingValues::append(bool value)
{
	append<BoolEncoding>(AlgorithmTable::BOOLEAN, value);
}


void PendingValues::append(float value)
{
	append<FloatEncoding>(AlgorithmTable::FLOAT, value);
}


void PendingValues::append(double value)
{
	append<DoubleEncoding>(AlgorithmTable::DOUBLE, value);
}


void PendingValues::append(const Ixor::UUID& value)
{
	append<UUIDEncoding>(AlgorithmTable::UUID, value);
}


void PendingValues::appendOctets(const char* data, std::size_t length)
{
	append<DWordEncoding>(AlgorithmTable::BASE64, data, length);
}


} } // namespace Ixor::FastInfoset
