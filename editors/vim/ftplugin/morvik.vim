" Morvik: comments, what belongs together (for %, with matchit), and sending texts to a running interpreter.
if exists('b:did_ftplugin')
  finish
endif
let b:did_ftplugin = 1
setlocal commentstring=\"%s\" comments= shiftwidth=2 expandtab
let b:match_words = '\%(^\|\s\)\@<=\:\%(\s\|$\)\@=:\%(^\|\s\)\@<=;\%(\s\|$\|\.\)\@=,\[\.:\.\],(:)'
let b:match_skip = 's:comment\|string'
let b:undo_ftplugin = 'setlocal commentstring< comments< shiftwidth< expandtab | unlet! b:match_words b:match_skip'

" :MorvikStart opens an interpreter in a window of its own; :[range]MorvikSend sends it lines.
if has('terminal')
  command! -buffer -nargs=* MorvikStart let g:morvik_terminal = term_start(['morvik', <f-args>], {'term_finish': 'close'})
  command! -buffer -range MorvikSend call term_sendkeys(g:morvik_terminal, join(getline(<line1>, <line2>), "\n") . "\n")
endif
