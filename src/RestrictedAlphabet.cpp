#include "Ixor/FastInfoset/RestrictedAlphabet.h"
#include "Poco/TextIterator.h"
#include "Poco/UTF8Encoding.h"
#include <algorithm>


namespace Ixor {
namespace FastInfoset {


RestrictedAlphabet::RestrictedAlphabet():
	_bitSize(0)
{
}


RestrictedAlphabet::RestrictedAlphabet(const std::string& utf8Characters):
	_characters(utf8Characters),
	_bitSize(0)
{
	poco_assert(!utf8Characters.empty());

	// At most one character per octet: one allocation. ASCII, as in the
	// built-in alphabets that every vocabulary makes, needs no decoder.
	_codes.reserve(_characters.size());
	if (std::all_of(_characters.begin(), _characters.end(), [](char octet) { return static_cast<unsigned char>(octet) < 0x80; }))
	{
		_codes.assign(_characters.begin(), _characters.end());
	}
	else
	{
		Ixor::UTF8Encoding utf8;
		Ixor::TextIterator it(_characters, utf8);
		const Ixor::TextIterator end(_characters);
		for (; it != end; ++it)
		{
			// Alphabets come from documents too. An invalid sequence would
			// have no UTF-8 form on decoding; it stands for "?", as invalid
			// UTF-16 does.
			const int ch = *it;
			_codes.push_back(ch < 0 ? '?' : ch);
		}
	}

	// The bits of N: the smallest k with 2^k > N.
	for (std::size_t n = _codes.size(); n > 0; n /= 2) ++_bitSize;
}


int RestrictedAlphabet::indexToChar(int code) const
{
	poco_assert(code >= 0 && static_cast<std::size_t>(code) < _codes.size());
	return _codes[code];
}


} } // namespace Ixor::FastInfoset
