// Extractive summaries: the most representative sentences or paragraphs of a
// text, in their original order.
//
// Sentences come from ICU's sentence break iterator; paragraphs are the
// non-blank lines. A unit's score is the mean, over its words, of how often
// each word occurs in the whole text (words are runs of letters and digits of
// three or more units, folded through lowerCharsTable()). The n best units win;
// ties go to the earlier one.
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
