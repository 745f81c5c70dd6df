#include "Ixor/FastInfoset/InvalidDecoding.h"
#include "Ixor/FastInfoset/FISException.h"


namespace Ixor {
namespace FastInfoset {


Ixor::AutoPtr<Encoding> InvalidDecoding::decode(BitStreamReader&)
{
	throw FISException("Invalid decoding defined");
}


} } // namespace Ixor::FastInfoset
