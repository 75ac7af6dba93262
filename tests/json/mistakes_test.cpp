// Every mistake in a JSON file is reported once, at its position, in plain words.

#include "tools/qrv/json/reading.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

// JSON, and all the errors that are reported about it.
struct cMistake {
    std::string json, report;
};

cMistake const mistakes[] = {
    {"", "-:1:1: error: the file is empty\n"},
    {"  \n ", "-:2:2: error: expected a value, found the end of the text\n"},
    {"\xef\xbb\xbf", "-:1:4: error: expected a value, found the end of the text\n"},
    {"1 2", "-:1:3: error: expected the end of the text, found '2'\n"},
    {"{}\n{}\n",
     "-:2:1: error: expected the end of the text, found '{'\n"
     "-:2:1: note: a file has one value; with one on each line, convert each line by itself\n"},
    {"{\"a\":1}\n{\"a\":2}\n",
     "-:2:1: error: expected the end of the text, found '{'\n"
     "-:2:1: note: a file has one value; with one on each line, convert each line by itself\n"},
    {"[1],", "-:1:4: error: expected the end of the text, found ','\n"},
    {"{\"a\":1} x", "-:1:9: error: expected the end of the text, found 'x'\n"},
    {"{\"a\":1}}", "-:1:8: error: expected the end of the text, found '}'\n"},
    {"0\n\n\n]", "-:4:1: error: expected the end of the text, found ']'\n"},
    {"]", "-:1:1: error: expected a value, found ']'\n"},
    {"[1,]", "-:1:4: error: expected a value, found ']'\n"
             "-:1:4: note: JSON has no comma before a closing bracket\n"},
    {"[\n  1,\n]", "-:3:1: error: expected a value, found ']'\n"
                   "-:3:1: note: JSON has no comma before a closing bracket\n"},
    {"{\"a\":1,}", "-:1:8: error: expected a key in double quotes, found '}'\n"
                   "-:1:8: note: JSON has no comma before a closing bracket\n"},
    {"[1,,2]", "-:1:4: error: expected a value, found ','\n"},
    {"[,1]", "-:1:2: error: expected a value, found ','\n"},
    {"[1", "-:1:3: error: expected ',' or ']', found the end of the text\n"
           "-:1:1: note: this '[' is not closed\n"},
    {"[1,", "-:1:4: error: expected a value, found the end of the text\n"
            "-:1:1: note: this '[' is not closed\n"},
    {"{", "-:1:2: error: expected a key in double quotes, found the end of the text\n"
          "-:1:1: note: this '{' is not closed\n"},
    {"{\"a\"", "-:1:5: error: expected ':' after the key, found the end of the text\n"
               "-:1:1: note: this '{' is not closed\n"},
    {"{\"a\":", "-:1:6: error: expected a value, found the end of the text\n"
                "-:1:1: note: this '{' is not closed\n"},
    {"{\"a\":1", "-:1:7: error: expected ',' or '}', found the end of the text\n"
                 "-:1:1: note: this '{' is not closed\n"},
    {"{\"a\":[1,2}", "-:1:10: error: expected ',' or ']', found '}'\n"
                     "-:1:6: note: this '[' is not closed\n"},
    {"[{\"a\":1]", "-:1:8: error: expected ',' or '}', found ']'\n"
                   "-:1:2: note: this '{' is not closed\n"},
    {"[\"x\" \"yyy\"]", "-:1:6: error: expected ',' or ']', found the string \"yyy\"\n"},
    {"[1 2]", "-:1:4: error: expected ',' or ']', found '2'\n"},
    {"[\"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\" "
     "\"yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy\"]",
     "-:1:65: error: expected ',' or ']', found the string \"yyyyyyyyyyyyyyyy ... "
     "yyyyyyyyyyyyyyyy\"\n"},
    {"[01]", "-:1:3: error: expected ',' or ']', found '1'\n"
             "-:1:3: note: JSON has no leading zeros\n"},
    {"[-01]", "-:1:4: error: expected ',' or ']', found '1'\n"
              "-:1:4: note: JSON has no leading zeros\n"},
    {"[0x1F]", "-:1:3: error: expected ',' or ']', found 'x1F'\n"
               "-:1:3: note: JSON has decimal numbers only\n"},
    {"[10x]", "-:1:4: error: expected ',' or ']', found 'x'\n"},
    {"[-1.5e+3 7]", "-:1:10: error: expected ',' or ']', found '7'\n"},
    {"[-]", "-:1:3: error: expected a digit after '-', found ']'\n"},
    {"[1.]", "-:1:4: error: expected a digit after '.', found ']'\n"},
    {"[1.e5]", "-:1:4: error: expected a digit after '.', found 'e5'\n"},
    {"[1e]", "-:1:4: error: expected a digit in the exponent, found ']'\n"},
    {"[1e+]", "-:1:5: error: expected a digit in the exponent, found ']'\n"},
    {"[.5]", "-:1:2: error: expected a value, found '.'\n"
             "-:1:2: note: JSON has a digit before the point of a number\n"},
    {"[+1]", "-:1:2: error: expected a value, found '+'\n"
             "-:1:2: note: JSON has no sign + before a number\n"},
    {"[-Infinity]", "-:1:3: error: expected a digit after '-', found 'Infinity'\n"
                    "-:1:3: note: JSON has no NaN and no infinity\n"},
    {"[Infinity]", "-:1:2: error: expected a value, found 'Infinity'\n"
                   "-:1:2: note: JSON has no NaN and no infinity\n"},
    {"[NaN]", "-:1:2: error: expected a value, found 'NaN'\n"
              "-:1:2: note: JSON has no NaN and no infinity\n"},
    {"nan", "-:1:1: error: expected a value, found 'nan'\n"
            "-:1:1: note: JSON has no NaN and no infinity\n"},
    {"[1e309]", "-:1:2: error: the number 1e309 is larger than every double, at path '0'\n"},
    {"{\"a\":[0, -1E400]}",
     "-:1:10: error: the number -1E400 is larger than every double, at path 'a/1'\n"},
    {"[truefalse]", "-:1:6: error: expected ',' or ']', found 'false'\n"},
    {"[nulltrue]", "-:1:6: error: expected ',' or ']', found 'true'\n"},
    {"tru", "-:1:1: error: expected a value, found 'tru'\n"},
    {"{\"a\":tr ue}", "-:1:6: error: expected a value, found 'tr'\n"},
    {"[True]", "-:1:2: error: expected a value, found 'True'\n"
               "-:1:2: note: JSON has true, false and null\n"},
    {"[None]", "-:1:2: error: expected a value, found 'None'\n"
               "-:1:2: note: JSON has true, false and null\n"},
    {"[undefined]", "-:1:2: error: expected a value, found 'undefined'\n"
                    "-:1:2: note: JSON has true, false and null\n"},
    {"[yes]", "-:1:2: error: expected a value, found 'yes'\n"},
    {"{a:1}", "-:1:2: error: expected a key in double quotes, found 'a'\n"},
    {"{1:2}", "-:1:2: error: expected a key in double quotes, found '1'\n"},
    {"{'a':1}", "-:1:2: error: expected a key in double quotes, found a single quote\n"
                "-:1:2: note: JSON has only double quotes\n"},
    {"['a']", "-:1:2: error: expected a value, found a single quote\n"
              "-:1:2: note: JSON has only double quotes\n"},
    {"{\"a\" 1}", "-:1:6: error: expected ':' after the key, found '1'\n"},
    {"{\"a\"=1}", "-:1:5: error: expected ':' after the key, found '='\n"},
    {"{\"a\":1 \"b\":2}", "-:1:8: error: expected ',' or '}', found the string \"b\"\n"},
    {"{\"a\":1; \"b\":2}", "-:1:7: error: expected ',' or '}', found ';'\n"},
    {"{\"a\":{\"b\":1}\n \"c\":2}", "-:2:2: error: expected ',' or '}', found the string \"c\"\n"},
    {"/* x */ 1", "-:1:1: error: expected a value, found '/*'\n"
                  "-:1:1: note: JSON has no comments\n"},
    {"1 // x", "-:1:3: error: expected the end of the text, found '//'\n"
               "-:1:3: note: JSON has no comments\n"},
    {"[1, # x\n2]", "-:1:5: error: expected a value, found '#'\n"
                    "-:1:5: note: JSON has no comments\n"},
    {"{\"a\":1, // x\n}", "-:1:9: error: expected a key in double quotes, found '//'\n"
                          "-:1:9: note: JSON has no comments\n"},
    {"{\"a\": 1} -; expected 7", "-:1:11: error: expected a digit after '-', found ';'\n"},
    {"[\"a\\x\"]",
     "-:1:4: error: unknown escape '\\x'; JSON has \\\" \\\\ \\/ \\b \\f \\n \\r \\t and \\u\n"},
    {"{\"a\\x\":1}",
     "-:1:4: error: unknown escape '\\x'; JSON has \\\" \\\\ \\/ \\b \\f \\n \\r \\t and \\u\n"},
    {"[\"\\\xc3\xa9\"]", "-:1:3: error: unknown escape '\\\xc3\xa9'; JSON has \\\" \\\\ \\/ \\b "
                         "\\f \\n \\r \\t and \\u\n"},
    {"[\"\\u12\"]", "-:1:3: error: expected four hexadecimal digits after \\u\n"},
    {"[\"\\u12G4\"]", "-:1:3: error: expected four hexadecimal digits after \\u\n"},
    {"[\"ab\\ud800\"]", "-:1:5: error: the escape \\ud800 is the first half of a character; the "
                        "second, \\udc00 to \\udfff, is expected after it\n"},
    {"[\"\\ud800\\u0041\"]", "-:1:3: error: the escape \\ud800 is the first half of a character; "
                             "the second, \\udc00 to \\udfff, is expected after it\n"},
    {"[\"\\uD800\\n\"]", "-:1:3: error: the escape \\uD800 is the first half of a character; the "
                         "second, \\udc00 to \\udfff, is expected after it\n"},
    {"[\"\\udc00\"]", "-:1:3: error: the escape \\udc00 is the second half of a character; the "
                      "first, \\ud800 to \\udbff, is expected before it\n"},
    {"\"abc", "-:1:1: error: this string is not closed\n"},
    {"[\"abc", "-:1:2: error: this string is not closed\n"},
    {"[\"abc\\", "-:1:2: error: this string is not closed\n"},
    {"[\"abc\\\"]", "-:1:2: error: this string is not closed\n"},
    {"{\"a\":1,\"b}", "-:1:8: error: this string is not closed\n"},
    {"[\"a\nb\"]",
     "-:1:4: error: found the control character U+000A in a string; write it as \\n\n"},
    {"[\"\x09\"]",
     "-:1:3: error: found the control character U+0009 in a string; write it as \\t\n"},
    {"[\"\x01\"]",
     "-:1:3: error: found the control character U+0001 in a string; write it as \\u0001\n"},
    {"[\"a\xff\"]", "-:1:4: error: found the byte 0xff, which is not UTF-8\n"},
    {"[\n \"a\xc3\"]", "-:2:4: error: found the byte 0xc3, which is not UTF-8\n"},
    {"[\"a\xc3", "-:1:2: error: this string is not closed\n"},
    {"[\"\xc3\xa9\xff\"]", "-:1:5: error: found the byte 0xff, which is not UTF-8\n"},
    {"[\"\xe2\x82x\"]", "-:1:3: error: found the byte 0xe2, which is not UTF-8\n"},
    {"[\"\xc3\xa9\x80\"]", "-:1:5: error: found the byte 0x80, which is not UTF-8\n"},
    {"[\"\xed\xa0\x80\"]", "-:1:3: error: found the byte 0xed, which is not UTF-8\n"},
    {"[\xff]", "-:1:2: error: expected a value, found '\\xff'\n"},
    {"[\xc3\xa9]", "-:1:2: error: expected a value, found '\xc3\xa9'\n"},
    {"[\xef\xbb\xbf]", "-:1:2: error: expected a value, found '\xef\xbb\xbf'\n"},
    {"\xef\xbb[1]", "-:1:1: error: the byte order mark is not the one of UTF-8\n"},
    {"\xef\xbb\xbf[1,]", "-:1:7: error: expected a value, found ']'\n"
                         "-:1:7: note: JSON has no comma before a closing bracket\n"},
    {"[1, \x00]"s, "-:1:5: error: expected a value, found '\\x00'\n"},
    {"[\"a\x00\"]"s,
     "-:1:4: error: found the control character U+0000 in a string; write it as \\u0000\n"},
    {"1\n\x00"s, "-:2:1: error: a character 0 follows the value\n"},
    {"[1]\x00[2]"s, "-:1:4: error: a character 0 follows the value\n"},
    {"\xff\xfe[\x00"
     "1\x00]\x00"s,
     "-:1:1: error: the file is in UTF-16: convert it to UTF-8\n"},
    {"\x00[\x00"
     "1\x00]"s,
     "-:1:1: error: the file is in UTF-16: convert it to UTF-8\n"},
    {"[\x00"
     "1\x00]\x00"s,
     "-:1:1: error: the file is in UTF-16: convert it to UTF-8\n"},
    {"\xff\xfe\x00\x00[\x00\x00\x00"
     "1\x00\x00\x00]\x00\x00\x00"s,
     "-:1:1: error: the file is in UTF-32: convert it to UTF-8\n"},
    {"\x00\x00\x00[\x00\x00\x00"
     "1\x00\x00\x00]"s,
     "-:1:1: error: the file is in UTF-32: convert it to UTF-8\n"},
    {"[\x00\x00\x00"
     "1\x00\x00\x00]\x00\x00\x00"s,
     "-:1:1: error: the file is in UTF-32: convert it to UTF-8\n"},
    {"\xfe\xff", "-:1:1: error: the file is in UTF-16: convert it to UTF-8\n"},
    {"{\"a\":1,\n \"b\":2, \"a\":3}",
     "-:2:9: error: this key occurs twice in the object, at path 'a'; use --duplicates=last\n"
     "-:1:2: note: it is first here\n"},
    {"{\"a\":1,\"a\":2,\"a\":3}",
     "-:1:8: error: this key occurs twice in the object, at path 'a'; use --duplicates=last\n"
     "-:1:2: note: it is first here\n"
     "-:1:14: error: this key occurs twice in the object, at path 'a'; use --duplicates=last\n"
     "-:1:2: note: it is first here\n"},
    {"[9007199254740993]", "-:1:2: error: the number 9007199254740993 fits neither int nor double, "
                           "at path '0'; use --big=double or --big=string\n"},
    {"{\"id\": -18446744073709551617}",
     "-:1:8: error: the number -18446744073709551617 fits neither int nor double, at path 'id'; "
     "use --big=double or --big=string\n"},
    {"[\"\\u0000\"]", "-:1:2: error: a string with a character 0 cannot be written, at path '0'\n"},
    {"{\"\\u0000\":1}",
     "-:1:2: error: a key with a character 0 cannot be written, at path '\"\\x00\"'\n"},
    {"{\"x\":{\"k\":1,\"k\":2},\"y\":]}",
     "-:1:13: error: this key occurs twice in the object, at path 'x/k'; use --duplicates=last\n"
     "-:1:7: note: it is first here\n"
     "-:1:24: error: expected a value, found ']'\n"},
};

TEST(JsonMistakes, are_reported_in_plain_words_at_their_positions) {
    for (auto const &[json, report] : mistakes) {
        cMessages messages("-", 100);
        std::string bytes = json;
        EXPECT_FALSE(cJsonFile(bytes, {}, messages).is_good()) << json;
        EXPECT_EQ(messages.text(), report) << json;
    }
}

} // namespace
