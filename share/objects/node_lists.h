// Operations on lists of nodes that have to know a node when they meet one; those for any objects are in
// share/utilities/object_lists.h. One list is used by one thread at a time.
#pragma once

#include "framework/ob_list.h"
#include "framework/text.h"

// To an empty target appends every element of source, whatever it is. To any other only the nodes (QFObject) of source
// that it doesn't have yet: nulls and other kinds of object are passed over.
KVSHARE_API void FindAndAdd(CObList& target, CObList& source);

// Gives a name for a copied feature or operation that no node of the list bears: the first free one of
// "name - word ", "name - word 2 ", "name - word 3 " and so on, each with a blank at its end. Names are compared
// exactly; elements that are no nodes are passed over. The result may be one of the texts handed in.
KVSHARE_API void ChangeNameForCopiedFeatAndOper(CObList& list, const CString& word, const CString& name,
                                                CString& result);
