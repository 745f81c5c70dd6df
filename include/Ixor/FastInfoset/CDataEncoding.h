//
// CDataEncoding.h
//
// Library: FastInfoset
// Module:  TextEncoding
//
// CDataEncoding is declared with the template it is in TextEncoding.h.
//


#ifndef FastInfoset_CDataEncoding_INCLUDED
#define FastInfoset_CDataEncoding_INCLUDED


#include "Ixor/FastInfoset/TextEncoding.h"


#endif // FastInfoset_CDataEncoding_INCLUDED
