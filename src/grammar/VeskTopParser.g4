// The grammar of unit, project and registry files, one start rule for each.
//
// Each rule has one parse-tree class, so no alternative carries a label.
parser grammar VeskTopParser;

options {
    tokenVocab = CommonLexer;
}

// ---- Start rules ----

registryFile : veskRegistry EOF ;
unitFile     : veskUnit EOF ;
projFile     : veskProject EOF ;

// ---- Registry file ----

path : STRING ;
url  : STRING ;
// The two look alike, so a location is always read as a path.
uri  : path | url ;

veskRegistry : projects? build_tools? ;
project      : IDENTIFIER uri ;
projects     : PROJECTS_STR LBRACE project* RBRACE ;

// ---- Contexts, conditions, values ----

// The lexer skips comments wherever they stand; the rule documents where they are usual.
comment : LINE_COMMENT | BLOCK_COMMENT ;

bool_operator : EQUALS | NEQUALS | GREATER | LESSER ;
bool_expr     : identifier ( bool_operator valueNode )? ;
condition     : IF_STR bool_expr ;
context       : LBRACE ( assignment | comment | cond_context )* RBRACE ;
cond_context  : condition context ;

identifier     : segment ( DOT segment )* ;
identifierName : UNIT_STR | IF_STR | IMPORT_STR | UNITS_STR | PROFILES_STR | PROJECTS_STR | TOOLS_STR
               | NAME_STR | IDENTIFIER ;
segment        : identifierName index* ;
index          : LSQUARE indexExpr RSQUARE ;
regex          : RAW_STRING ;
range          : NUMBER ( COLON | DDOT ) NUMBER ;
indexExpr      : NUMBER | range | regex | INDEX_NAME | identifier ;

valueNode : STRING | RAW_STRING | PATH_STRING | identifier | NUMBER | list | context ;
list      : LSQUARE ( valueNode ( COMMA valueNode )* )? RSQUARE ;

assignment          : assignment_modifier? IDENTIFIER ( assign_operator valueNode )? ;
assignment_modifier : UP | MUST | HINT ;
assign_operator     : EQUALS | APPEND | ASSIGNEMPTY ;

// ---- Tools section of project and registry files ----

build_tool  : IDENTIFIER context ;
build_tools : TOOLS_STR LBRACE build_tool* RBRACE ;

// ---- Unit file ----

veskUnit  : unit_name? ( target | comment )* ;
unit_name : UNIT_STR IDENTIFIER ;
target    : IDENTIFIER ( LBRACKET parameter_name ( COMMA parameter_name )* RBRACKET )?
            COLON dependency* context ;

dependency            : dependency_modifier? dependency_identifier
                        ( LBRACKET dependency_parameter ( COMMA dependency_parameter )* RBRACKET )?
                        ( dependency_alias IDENTIFIER )? ;
dependency_modifier   : PLUS ;
dependency_alias      : ALIAS | MERGE_ALIAS ;
direct_dependency     : ( ( IDENTIFIER SLASH )? IDENTIFIER DCOLON )? IDENTIFIER ;
dependency_macro      : AT identifier ;
dependency_parameter  : identifier | DOT ;
dependency_identifier : direct_dependency | dependency_macro ;
parameter_name        : IDENTIFIER ;

// ---- Project file ----

veskProject : proj_name? proj_import_section? build_tools? units? profiles? ;
proj_name   : NAME_STR IDENTIFIER ;

proj_source_profile  : IDENTIFIER COLON ;
proj_import_profile  : LBRACKET IDENTIFIER RBRACKET ;
proj_path_import     : proj_source_profile? STRING IDENTIFIER? proj_import_profile? SEMICOLON ;
proj_registry_import : proj_source_profile? IDENTIFIER proj_import_profile? SEMICOLON ;
proj_import          : proj_path_import | proj_registry_import ;
proj_import_section  : IMPORT_STR LBRACE proj_import* RBRACE ;

unit     : IDENTIFIER LBRACE STRING* RBRACE ;
units    : UNITS_STR LBRACE unit* RBRACE ;
profile  : IDENTIFIER context ;
profiles : PROFILES_STR LBRACE profile* RBRACE ;
