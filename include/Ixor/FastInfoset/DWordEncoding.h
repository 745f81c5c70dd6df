//
// DWordEncoding.h
//
// Library: FastInfoset
// Module:  OctetEncoding
//
// DWordEncoding is declared with the other kind of octets in OctetEncoding.h.
//


#ifndef FastInfoset_DWordEncoding_INCLUDED
#define FastInfoset_DWordEncoding_INCLUDED


#include "Ixor/FastInfoset/OctetEncoding.h"


#endif // FastInfoset_DWordEncoding_INCLUDED
