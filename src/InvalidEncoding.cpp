#include "Ixor/FastInfoset/InvalidEncoding.h"
#include "Ixor/FastInfoset/FISException.h"


namespace Ixor {
namespace FastInfoset {


void InvalidEncoding::encode(BitStreamWriter&, const std::string&)
{
	throw FISException("Invalid encoding defined");
}


Int32 InvalidEncoding::check(const std::string&)
{
	return 0;
}


} } // namespace Ixor::FastInfoset
