if exists('b:did_ftplugin')
  finish
endif
let b:did_ftplugin = 1

setlocal commentstring=//\ %s
setlocal comments=://,sO:*\ -,mO:*\ \ ,exO:*/
setlocal expandtab shiftwidth=4 softtabstop=4
setlocal textwidth=100

" Compilers' messages and vesk's own: vesk.txt:3:8: error: There is no target 'x'.
setlocal makeprg=vesk
setlocal errorformat=%f:%l:%c:\ %trror:\ %m,%f:%l:%c:\ %tarning:\ %m,%f:%l:%c:\ %tote:\ %m
setlocal errorformat+=%E%trror:\ %m,%Z\ \ %f:%l:%c

let b:undo_ftplugin = 'setlocal commentstring< comments< expandtab< shiftwidth< softtabstop<'
      \ . ' textwidth< makeprg< errorformat<'
