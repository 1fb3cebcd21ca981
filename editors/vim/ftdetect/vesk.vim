" Vim takes *.txt for plain text, so this has to override it.
autocmd BufNewFile,BufRead vesk.txt,.vesk_project.txt,.vesk_registry.txt set filetype=vesk
