#include "highlighting/CodeGrammars.h"

namespace morvane {

namespace {

using Quote = CodeGrammar::Quote;
constexpr auto anywhere = Quote::End::anywhere;

// What many languages write alike.
const QList<CodeGrammar::Comment> slashStar{{u"/*", u"*/"}};
const QList<CodeGrammar::Comment> nestingSlashStar{{u"/*", u"*/", true}};
const Quote doubleQuote{u"\"", u"\""};
const Quote singleQuote{u"'", u"'"};
const Quote character{u"'", u"'", u'\\', Quote::End::character};
const Quote threeQuotes{u"\"\"\"", u"\"\"\"", u'\\', anywhere};
const Quote threeSingleQuotes{u"'''", u"'''", u'\\', anywhere};
const Quote backtick{u"`", u"`", u'\\', anywhere};
const Quote doubledSingle{u"'", u"'", 0, anywhere, true};

const CodeGrammar python{
    .names = u"python py python3 py3 pyw ipython",
    .keywords =
        u"False None True and as assert async await break class continue def del elif else except "
        u"finally for from global if import in is lambda match nonlocal not or pass raise return self "
        u"try while with yield",
    .types = u"bool bytes complex dict float frozenset int list object set str tuple type",
    .lineComments = {u"#"},
    .quotes = {threeQuotes, threeSingleQuotes, doubleQuote, singleQuote},
    .sigils = u"@",
    .capitalTypes = true,
};

const CodeGrammar javaScript{
    .names = u"javascript js jsx mjs cjs node",
    .keywords = u"async await break case catch class const continue debugger default delete do else export "
                u"extends false finally for from function get if import in instanceof let new null of return "
                u"set static super switch this throw true try typeof undefined var void while with yield",
    .types = u"",
    .lineComments = {u"//"},
    .comments = slashStar,
    .quotes = {doubleQuote, singleQuote, backtick},
    .sigils = u"$@",
    .wordCharacters = u"$",
    .capitalTypes = true,
    .regexLiterals = true,
};

const CodeGrammar typeScript{
    .names = u"typescript ts tsx mts cts",
    .keywords =
        u"abstract as asserts async await break case catch class const constructor continue declare "
        u"default delete do else enum export extends false finally for from function get if "
        u"implements import in infer instanceof interface is keyof let namespace new null of override "
        u"private protected public readonly return satisfies set static super switch this throw true "
        u"try type typeof undefined var void while yield",
    .types = u"any bigint boolean never number object string symbol unknown",
    .lineComments = {u"//"},
    .comments = slashStar,
    .quotes = {doubleQuote, singleQuote, backtick},
    .sigils = u"$@",
    .wordCharacters = u"$",
    .capitalTypes = true,
    .regexLiterals = true,
};

const CodeGrammar java{
    .names = u"java",
    .keywords = u"abstract assert break case catch class continue default do else enum extends false final "
                u"finally for if implements import instanceof interface native new null package permits "
                u"private protected public record return sealed static strictfp super switch synchronized "
                u"this throw throws transient true try var void volatile while yield",
    .types = u"boolean byte char double float int long short",
    .lineComments = {u"//"},
    .comments = slashStar,
    .quotes = {threeQuotes, doubleQuote, character},
    .sigils = u"@",
    .capitalTypes = true,
};

const CodeGrammar c{
    .names = u"c h",
    .keywords = u"NULL auto break case const continue default do else enum extern false for goto if inline "
                u"register restrict return sizeof static struct switch true typedef union volatile while",
    .types =
        u"FILE bool char double float int int16_t int32_t int64_t int8_t long short signed size_t ssize_t "
        u"uint16_t uint32_t uint64_t uint8_t uintptr_t unsigned void wchar_t",
    .lineComments = {u"//"},
    .comments = slashStar,
    .quotes = {doubleQuote, character},
    .preprocessor = true,
};

const CodeGrammar cpp{
    .names = u"cpp c++ cc cxx hpp hxx hh h++ ino arduino",
    .keywords =
        u"alignas alignof and auto break case catch class co_await co_return co_yield concept const "
        u"const_cast consteval constexpr constinit continue decltype default delete do dynamic_cast "
        u"else enum explicit export extern false final for friend goto if inline mutable namespace new "
        u"noexcept not nullptr operator or override private protected public reinterpret_cast requires "
        u"return sizeof static static_assert static_cast struct switch template this thread_local "
        u"throw true try typedef typeid typename union using virtual volatile while",
    .types = u"bool char char16_t char32_t char8_t double float int int16_t int32_t int64_t int8_t long map "
             u"optional pair ptrdiff_t set short signed size_t string string_view uint16_t uint32_t uint64_t "
             u"uint8_t uintptr_t unsigned unordered_map vector void wchar_t",
    .lineComments = {u"//"},
    .comments = slashStar,
    .quotes = {{u"R\"(", u")\"", 0, anywhere}, doubleQuote, character},
    .capitalTypes = true,
    .preprocessor = true,
};

const CodeGrammar cSharp{
    .names = u"csharp cs c# dotnet",
    .keywords =
        u"abstract as async await base break case catch checked class const continue default delegate "
        u"do else enum event explicit extern false finally fixed for foreach get if implicit in init "
        u"interface internal is lock nameof namespace new null operator out override params partial "
        u"private protected public readonly record ref required return sealed set sizeof static struct "
        u"switch this throw true try typeof unchecked unsafe using var virtual void volatile when where "
        u"while with yield",
    .types =
        u"bool byte char decimal double dynamic float int long nint object sbyte short string uint ulong "
        u"ushort",
    .lineComments = {u"//"},
    .comments = slashStar,
    .quotes = {threeQuotes,
               {u"$@\"", u"\"", 0, anywhere, true},
               {u"@\"", u"\"", 0, anywhere, true},
               doubleQuote,
               character},
    .capitalTypes = true,
    .preprocessor = true,
};

const CodeGrammar go{
    .names = u"go golang",
    .keywords = u"break case chan const continue default defer else fallthrough false for func go goto if "
                u"import interface iota map nil package range return select struct switch true type var",
    .types =
        u"any bool byte comparable complex128 complex64 error float32 float64 int int16 int32 int64 int8 "
        u"rune string uint uint16 uint32 uint64 uint8 uintptr",
    .lineComments = {u"//"},
    .comments = slashStar,
    .quotes = {{u"`", u"`", 0, anywhere}, doubleQuote, character},
};

const CodeGrammar rust{
    .names = u"rust rs",
    .keywords =
        u"Self as async await break const continue crate dyn else enum extern false fn for if impl in "
        u"let loop match mod move mut pub ref return self static struct super trait true type union "
        u"unsafe use where while",
    .types = u"bool char f32 f64 i128 i16 i32 i64 i8 isize str u128 u16 u32 u64 u8 usize",
    .lineComments = {u"//"},
    .comments = nestingSlashStar,
    .quotes = {{u"r#\"", u"\"#", 0, anywhere},
               {u"r\"", u"\"", 0, anywhere},
               {u"\"", u"\"", u'\\', anywhere},
               character},
    .capitalTypes = true,
};

const CodeGrammar php{
    .names = u"php php7 php8",
    .keywords =
        u"abstract and array as break callable case catch class clone const continue declare default do "
        u"echo else elseif empty enddeclare endfor endforeach endif endwhile enum exit extends false "
        u"final finally fn for foreach function global goto if implements include include_once "
        u"instanceof interface isset list match namespace new null or parent php print private "
        u"protected public readonly require require_once return self static switch throw trait true "
        u"try unset use var while yield",
    .types = u"bool float int iterable mixed never object string void",
    .lineComments = {u"//", u"#"},
    .comments = slashStar,
    .quotes = {{u"\"", u"\"", u'\\', anywhere}, {u"'", u"'", u'\\', anywhere}},
    .sigils = u"$",
    .ignoresCase = true,
    .capitalTypes = true,
    .hereSigns = u"<",
};

const CodeGrammar ruby{
    .names = u"ruby rb",
    .keywords =
        u"BEGIN END alias and attr_accessor attr_reader attr_writer begin break case class def do else "
        u"elsif end ensure extend false for if in include lambda loop module next nil not or private "
        u"proc protected public raise redo require require_relative rescue retry return self super "
        u"then true undef unless until when while yield",
    .types = u"",
    .lineComments = {u"#"},
    .comments = {{u"=begin", u"=end"}},
    .quotes = {{u"\"", u"\"", u'\\', anywhere}, singleQuote, {u"`", u"`"}},
    .sigils = u"@$:",
    .wordCharacters = u"?",
    .capitalTypes = true,
    .hereSigns = u"~-",
    .regexLiterals = true,
};

const CodeGrammar swift{
    .names = u"swift",
    .keywords =
        u"actor any as associatedtype async await break case catch class continue convenience default "
        u"defer deinit didSet do else enum extension fallthrough false fileprivate final for func get "
        u"guard if import in indirect init inout internal is isolated lazy let mutating nil nonisolated "
        u"open operator optional override private protocol public repeat required rethrows return "
        u"self set some static struct subscript super switch throw throws true try typealias unowned "
        u"var weak where while willSet",
    .types = u"",
    .lineComments = {u"//"},
    .comments = nestingSlashStar,
    .quotes = {threeQuotes, doubleQuote},
    .sigils = u"@#$",
    .capitalTypes = true,
};

const CodeGrammar kotlin{
    .names = u"kotlin kt kts",
    .keywords =
        u"abstract actual as break by catch class companion const constructor continue crossinline data "
        u"do else enum expect external false final finally for fun get if import in infix init inline "
        u"inner interface internal is it lateinit noinline null object open operator out override "
        u"package private protected public reified return sealed set super suspend tailrec this throw "
        u"true try typealias val var vararg when where while",
    .types = u"",
    .lineComments = {u"//"},
    .comments = nestingSlashStar,
    .quotes = {{u"\"\"\"", u"\"\"\"", 0, anywhere}, doubleQuote, character},
    .sigils = u"@",
    .capitalTypes = true,
};

const CodeGrammar sql{
    .names = u"sql mysql mariadb postgresql postgres psql pgsql plpgsql sqlite sqlite3 tsql plsql",
    .keywords =
        u"add all alter and any as asc autoincrement auto_increment begin between by cascade case check "
        u"collate column commit conflict constraint create cross current_date current_timestamp "
        u"database default delete desc distinct do drop else end except exists explain false fetch "
        u"filter first following for foreign from full function grant group having if ilike in index "
        u"inner insert intersect into is join key last lateral left like limit materialized natural not "
        u"null nulls offset on or order outer over partition preceding primary procedure range "
        u"recursive references rename replace returning returns revoke right rollback row rows schema "
        u"select set table then to top transaction trigger true truncate unbounded union unique update "
        u"using values view when where window with",
    .types =
        u"bigint bigserial binary bit blob bool boolean bytea char character date datetime decimal double "
        u"float int integer interval json jsonb money nchar numeric nvarchar precision real serial smallint "
        u"text time timestamp timestamptz tinyint uuid varbinary varchar xml",
    .lineComments = {u"--"},
    .comments = slashStar,
    .quotes = {doubledSingle, {u"\"", u"\"", 0}, {u"`", u"`", 0}},
    .sigils = u"@",
    .ignoresCase = true,
};

const CodeGrammar shell{
    .names = u"sh bash shell zsh ksh fish shellscript shell-script console shell-session bashrc",
    .keywords =
        u"alias break case continue declare do done elif else esac eval exec exit export fi for "
        u"function if in local readonly return select set shift source sudo then time trap unset until "
        u"while",
    .types = u"",
    .lineComments = {u"#"},
    .quotes = {{u"\"", u"\"", u'\\', anywhere}, {u"'", u"'", 0, anywhere}},
    .sigils = u"$",
    .wordCharacters = u"-",
    .blankBefore = true,
    .hereSigns = u"- ",
};

const CodeGrammar powerShell{
    .names = u"powershell ps1 pwsh ps psm1",
    .keywords =
        u"begin break catch class continue data do dynamicparam else elseif end enum exit filter finally "
        u"for foreach function if in param process return switch throw trap try until using while",
    .types = u"",
    .lineComments = {u"#"},
    .comments = {{u"<#", u"#>"}},
    .quotes = {{u"@\"", u"\"@", 0, anywhere},
               {u"@'", u"'@", 0, anywhere},
               {u"\"", u"\"", u'`', anywhere},
               doubledSingle},
    .sigils = u"$",
    .wordCharacters = u"-",
    .ignoresCase = true,
    .capitalTypes = true,
    .blankBefore = true,
};

const CodeGrammar css{
    .names = u"css scss sass less",
    .keywords = u"",
    .types = u"",
    .lineComments = {u"//"},
    .comments = slashStar,
    .quotes = {doubleQuote, singleQuote},
    .sigils = u"@#.$",
    .wordCharacters = u"-",
    .keys = true,
    .blankBefore = true,
};

const CodeGrammar json{
    .names = u"json jsonc json5 jsonl ndjson geojson",
    .keywords = u"false null true",
    .types = u"",
    .lineComments = {u"//"},
    .comments = slashStar,
    .quotes = {doubleQuote, singleQuote},
    .keys = true,
};

const CodeGrammar yaml{
    .names = u"yaml yml",
    .keywords = u"False No Null Off On True Yes false no null off on true yes",
    .types = u"",
    .lineComments = {u"#"},
    .quotes = {doubleQuote, {u"'", u"'", 0, Quote::End::line, true}},
    .sigils = u"&*",
    .wordCharacters = u"-./'",
    .keys = true,
    .blankBefore = true,
};

} // namespace

const QList<CodeGrammar> &CodeGrammars::all()
{
    static const QList<CodeGrammar> grammars{python, javaScript, typeScript, java, c,     cpp,    cSharp,
                                             go,     rust,       php,        ruby, swift, kotlin, sql,
                                             shell,  powerShell, css,        json, yaml};
    return grammars;
}

} // namespace morvane
