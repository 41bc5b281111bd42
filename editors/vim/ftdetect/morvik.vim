" Morvik source is bytes of a set of its own: read as Latin-1, no byte is changed.
autocmd BufReadPre *.morvik setlocal fileencodings=latin1
autocmd BufRead,BufNewFile *.morvik setlocal filetype=morvik
