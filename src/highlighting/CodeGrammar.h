#pragma once

#include <QList>
#include <QStringView>

namespace morvane {

// What tells one language from another, as data.
struct CodeGrammar {
    struct Quote {
        enum class End {
            line,      // it ends with its line at the latest
            anywhere,  // it goes on over lines
            character, // it holds one character, or isn't one
        };

        QStringView opens;
        QStringView closes;
        char16_t escape = u'\\'; // takes the next character along; 0 for none
        End end = End::line;
        bool doubled = false; // the closing mark written twice stands for itself
    };
    struct Comment {
        QStringView opens;
        QStringView closes;
        bool nests = false;
    };

    QStringView names;    // what the language is called; apart by spaces, like the words
    QStringView keywords; // constants such as "true" among them
    QStringView types;
    QList<QStringView> lineComments;
    QList<Comment> comments;
    QList<Quote> quotes;        // longer openings first
    QStringView sigils;         // characters that begin a variable or an annotation
    QStringView wordCharacters; // beside letters, digits and "_"
    bool ignoresCase = false;   // in keywords and types
    bool capitalTypes = false;  // a word like "String" is a type
    bool keys = false;          // a word or a quote before ":" is a key
    bool preprocessor = false;  // "#" begins a directive
    bool blankBefore = false;   // a line comment begins the line or stands after a blank
    // "<<END" opens a text that ends with a line "END"; these may stand before the word. None: no such texts.
    QStringView hereSigns;
    bool regexLiterals = false; // "/…/" where a value is expected
};

} // namespace morvane
