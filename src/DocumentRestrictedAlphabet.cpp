#include "Ixor/FastInfoset/DocumentRestrictedAlphabet.h"


namespace Ixor {
namespace FastInfoset {


DocumentRestrictedAlphabet::DocumentRestrictedAlphabet()
{
	_alphabets.reserve(16);
	add(NUMERIC_CHARACTERS);
	add(DATE_TIME_CHARACTERS);
	for (int i = 3; i <= 15; ++i) addDummy();
	poco_assert(_alphabets.size() == 15);
}


DocumentRestrictedAlphabet::DocumentRestrictedAlphabet(bool)
{
}


unsigned int DocumentRestrictedAlphabet::add(const std::string& utf8Characters)
{
	const unsigned int position = static_cast<unsigned int>(_alphabets.size());
	_alphabets.push_back(RestrictedAlphabet(utf8Characters));
	return position;
}


void DocumentRestrictedAlphabet::addDummy()
{
	_alphabets.push_back(RestrictedAlphabet());
}


void DocumentRestrictedAlphabet::restore(const DocumentRestrictedAlphabet& base)
{
	const std::size_t count = base._alphabets.size();
	bool startsWithBase = _alphabets.size() >= count;
	for (std::size_t i = 0; startsWithBase && i < count; ++i)
	{
		startsWithBase = _alphabets[i].characters() == base._alphabets[i].characters();
	}
	if (startsWithBase) _alphabets.resize(count);
	else _alphabets = base._alphabets;
}


DocumentRestrictedAlphabet DocumentRestrictedAlphabet::operator - (const DocumentRestrictedAlphabet& other) const
{
	poco_assert(other.alphabets().size() <= _alphabets.size());
	DocumentRestrictedAlphabet result(true);
	result._alphabets.assign(_alphabets.begin() + other.alphabets().size(), _alphabets.end());
	return result;
}


} } // namespace Ixor::FastInfoset
