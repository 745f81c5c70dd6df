#include "DocumentBits.h"
#include "Ixor/FastInfoset/Encoder.h"


using Ixor::FastInfoset::Encoder;


namespace TestSupport {


DocumentBits::DocumentBits():
	_writer(_out, false)
{
}


DocumentBits& DocumentBits::header()
{
	return bits(0xE0000001u, 32).bits(0, 1);
}


DocumentBits& DocumentBits::bits(unsigned int value, int count)
{
	_writer.write(value, count);
	return *this;
}


DocumentBits& DocumentBits::raw(const std::string& octets)
{
	_writer.write(octets);
	return *this;
}


DocumentBits& DocumentBits::integer(unsigned int value)
{
	Encoder::integer(_writer, value);
	return *this;
}


DocumentBits& DocumentBits::length(unsigned long length)
{
	Encoder::nonEmptyStringLength(_writer, length);
	return *this;
}


DocumentBits& DocumentBits::string(const std::string& text)
{
	Encoder::nonEmptyOctetString(_writer, text);
	return *this;
}


DocumentBits& DocumentBits::literal(const std::string& text)
{
	return bits(0, 1).string(text);
}


DocumentBits& DocumentBits::sequence(unsigned int length)
{
	Encoder::lengthOfSequence(_writer, length);
	return *this;
}


DocumentBits& DocumentBits::pad()
{
	_writer.pad(false);
	return *this;
}


DocumentBits& DocumentBits::repeat(std::size_t count, const std::function<void(DocumentBits&)>& item)
{
	for (std::size_t i = 0; i < count; ++i) item(*this);
	return *this;
}


std::string DocumentBits::done()
{
	_writer.complete();
	return _out.str();
}


} // namespace TestSupport
