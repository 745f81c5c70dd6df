//
// HexEncoding.h
//
// Library: FastInfoset
// Module:  OctetEncoding
//
// HexEncoding is declared with the other kind of octets in OctetEncoding.h.
//


#ifndef FastInfoset_HexEncoding_INCLUDED
#define FastInfoset_HexEncoding_INCLUDED


#include "Ixor/FastInfoset/OctetEncoding.h"


#endif // FastInfoset_HexEncoding_INCLUDED
