"""Colours of code that can be read on light and on dark ground, comments included: a contrast of at least 4.5 to 1."""
from pygments.style import Style
from pygments.token import Comment, Error, Generic, Keyword, Name, Number, Operator, Punctuation, String, Token


def _styles(ink, comment, keyword, string, number, name):
    return {
        Token: ink, Comment: "italic " + comment, Comment.Preproc: "noitalic " + name, Comment.PreprocFile: "noitalic " + string,
        Keyword: keyword, Keyword.Type: keyword, Operator: ink, Operator.Word: keyword, Punctuation: ink, String: string,
        Number: number, Name: ink, Name.Builtin: name, Name.Function: name, Name.Class: name, Generic.Prompt: comment, Error: ink,
    }


class Light(Style):
    background_color = "#f8f9fb"
    styles = _styles("#24292f", "#57606a", "#a0111f", "#0a3069", "#0550ae", "#6639ba")


class Dark(Style):
    background_color = "#1c2128"
    styles = _styles("#d0d7de", "#9aa4af", "#ff9a8f", "#a5d6ff", "#79c0ff", "#d2a8ff")
