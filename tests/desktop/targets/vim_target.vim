" SPDX-License-Identifier: MIT
" Keeps a journal of the text in vim and takes commands. The environment has the files: TARGET_JOURNAL, TARGET_OUT,
" and TARGET_COMMAND, whose command ("publish", "clear") is carried out within 20 ms. The end of a command removes
" that file. The process number goes to TARGET_PID once everything is ready.
set nocompatible encoding=utf-8 noswapfile viminfo= title titlestring=vim-target
python3 << EOF
import os, pathlib, sys, vim
sys.path.append(os.environ["TARGET_FOLDER"])
from journal import Journal
journal = Journal(os.environ["TARGET_JOURNAL"])

def text():
    return "\n".join(vim.current.buffer)

def obey():
    command = pathlib.Path(os.environ["TARGET_COMMAND"])
    if not command.exists():
        return
    if command.read_text() == "clear":
        vim.current.buffer[:] = None
        # A key that missed its aim may have ended the insert mode.
        vim.command("if mode() ==# 'n' | call feedkeys('i', 'n') | endif")
    else:
        pathlib.Path(os.environ["TARGET_OUT"]).write_text(text(), encoding="utf-8")
    command.unlink()

def begin():
    vim.command("startinsert")
    pathlib.Path(os.environ["TARGET_PID"]).write_text(str(os.getpid()))
EOF
autocmd TextChangedI,TextChangedP,TextChanged * python3 journal.changed(len(text()))
" Vim in a terminal sees a signal at the next key alone.
call timer_start(20, {-> py3eval("obey()")}, {"repeat": -1})
autocmd VimEnter * python3 begin()
