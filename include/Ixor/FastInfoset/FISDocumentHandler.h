//
// FISDocumentHandler.h
//
// Library: FastInfoset
// Module:  FISDocumentHandler
//


#ifndef FastInfoset_FISDocumentHandler_INCLUDED
#define FastInfoset_FISDocumentHandler_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class DocumentVocabulary;


class FastInfoset_API FISDocumentHandler
	/// The settings that a Fast Infoset producer takes before a document is
	/// written. FastInfosetParser reports a document's settings to it, so
	/// that a FastInfosetWriter given as handler writes the document again
	/// with the same vocabulary.
{
public:
	virtual void setDocumentVocabulary(const DocumentVocabulary& vocabulary) = 0;
		/// Replaces the document vocabulary by a copy of vocabulary.

	virtual DocumentVocabulary& getDocumentVocabulary() = 0;
	virtual const DocumentVocabulary& getDocumentVocabulary() const = 0;
		/// The document vocabulary itself, not a copy.

	virtual void setWriteXMLDeclaration(bool write) = 0;
		/// Whether the document starts with an XML declaration.

	virtual void setExternalVocabulary(const std::string& uri, const DocumentVocabulary& vocabulary) = 0;
		/// Names an external vocabulary and gives its content.

	virtual ~FISDocumentHandler();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FISDocumentHandler_INCLUDED
