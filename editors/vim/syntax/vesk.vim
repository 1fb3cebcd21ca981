" Highlighting of vesk's files. Made by scripts/editor-keywords.
if exists('b:current_syntax')
  finish
endif

syntax iskeyword @,48-57,_,-

syntax keyword veskKeyword unit if import units profiles projects tools name
syntax match veskTarget /^\s*\zs\h[[:alnum:]_-]*\ze\s*\%(([^()]*)\)\?\s*::\@!/
syntax match veskNumber /\%([[:alnum:]_-]\)\@1<!-\?\%(0[xX]\x\+\|\d\+\)/
syntax match veskOperator /=>\|+>\|+=\|?=\|!=\|[=<>^!?@]/
syntax match veskIndexName /'[^']*'/
syntax region veskReference start=/[$#]{/ end=/}/ contained oneline
syntax region veskString start=/"/ end=/"/ contains=veskReference
syntax region veskPath start=/P"(/ end=/)"/ contains=veskReference
syntax region veskRawString start=/R"(/ end=/)"/
syntax match veskComment /\/\/.*/
syntax region veskComment start=+/\*+ end=+\*/+

highlight default link veskKeyword Keyword
highlight default link veskTarget Function
highlight default link veskNumber Number
highlight default link veskOperator Operator
highlight default link veskIndexName String
highlight default link veskReference Identifier
highlight default link veskString String
highlight default link veskPath String
highlight default link veskRawString String
highlight default link veskComment Comment

let b:current_syntax = 'vesk'
