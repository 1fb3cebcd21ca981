// The tokens of unit, project and registry files.
//
// The order of the rules is part of the language: token types are numbered by it, and of two rules
// that match text of the same length the earlier one wins. So the keywords stand before IDENTIFIER.
lexer grammar CommonLexer;

WS            : [\t\n\r ]+ -> skip ;
LINE_COMMENT  : '//' ~[\r\n]* -> skip ;
BLOCK_COMMENT : '/*' .*? '*/' -> skip ;

COLON       : ':' ;
DCOLON      : '::' ;
ALIAS       : '=>' ;
MERGE_ALIAS : '+>' ;
LBRACE      : '{' ;
RBRACE      : '}' ;
LBRACKET    : '(' ;
RBRACKET    : ')' ;
EQUALS      : '=' ;
NEQUALS     : '!=' ;
GREATER     : '>' ;
LESSER      : '<' ;
APPEND      : '+=' ;
ASSIGNEMPTY : '\u003F=' ;

// A string has no escapes and may span lines; the name of an index may not.
STRING     : '"' ~["]* '"' ;
INDEX_NAME : '\'' ~['\r\n]* '\'' ;

// Both end at the first ')' that a '"' directly follows. The optional ')' is for content that ends
// in one: without it RAW_CONTENT would take the last two of "))" together and miss the end.
RAW_STRING  : 'R"(' RAW_CONTENT*? ')'? ')"' ;
PATH_STRING : 'P"(' RAW_CONTENT*? ')'? ')"' ;

NUMBER : '-'? ( '0' [xX] [0-9A-Fa-f]+ | [0-9]+ ) ;

LSQUARE   : '[' ;
RSQUARE   : ']' ;
PLUS      : '+' ;
AT        : '@' ;
UP        : '^' ;
MUST      : '!' ;
HINT      : '\u003F' ;
SLASH     : '/' ;
COMMA     : ',' ;
DDOT      : '..' ;
DOT       : '.' ;
SEMICOLON : ';' ;

UNIT_STR     : 'unit' ;
IF_STR       : 'if' ;
IMPORT_STR   : 'import' ;
UNITS_STR    : 'units' ;
PROFILES_STR : 'profiles' ;
PROJECTS_STR : 'projects' ;
TOOLS_STR    : 'tools' ;
NAME_STR     : 'name' ;
IDENTIFIER   : [A-Za-z_] [A-Za-z0-9_-]* ;

fragment RAW_CONTENT : ~[)] | ')' ~["] ;
