// Extractive summaries: the most representative sentences or paragraphs of a
// text, in their original order.
//
// Sentences come from ICU's sentence break iterator, run over the text with
// single line ends read as blanks (so hard-wrapped lines join); paragraphs
// are the non-blank lines. Words are runs of letters and digits of three or
// more units, folded through lowerCharsTable(). A word weighs the number of
// its occurrences in the whole text, or nothing when more than half of the
// sentences (paragraphs) hold it, which keeps out "the" and its kind in any
// language. A sentence scores the sum of the weights of its words divided by
// the square root of their number. The n best win, ties going to the earlier
// one, and are given with their runs of white space collapsed to one blank.
#pragma once

#include "norvane/core/string.h"

namespace norvane::text {

// At most n sentences, joined with a blank. Null for n under 1 or a text
// without sentences.
String summarizeInSentences(const String& s, long n);
// At most n paragraphs, joined with "\n". Null for n under 1 or a text
// without paragraphs.
String summarizeInParagraphs(const String& s, long n);

}  // namespace norvane::text
