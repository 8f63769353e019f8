"""What the host's Python console does with a statement, as the interactive
prompt would: runs it in the workspace namespace, shows the value of each
expression statement, and turns every failure into its traceback as text."""
import ast
import contextlib
import io
import sys
import traceback

import numpy

# The element types that the workspace's arrays can hold (NumPy kind + size).
WORKSPACE_TYPES = {'u1', 'i2', 'u2', 'i4', 'u4', 'f2', 'f4', 'f8'}


class _Sink(io.TextIOBase):
    """A text stream that hands each piece of text to the host as it comes.
    Once its statement has ended (closed), text that still arrives, from a
    stream kept by the user's code, goes to the process's own stream."""

    def __init__(self, emit, fallback):
        self._emit, self._fallback = emit, fallback

    def writable(self):
        return True

    def close(self):
        self._emit = None

    def write(self, text):
        if self._emit is not None:
            self._emit(text)
        elif self._fallback is not None:
            self._fallback.write(text)
        return len(text)


def _user_traceback(tb):
    # Frames of this module are the console's, not the user's.
    while tb is not None and tb.tb_frame.f_globals is globals():
        tb = tb.tb_next
    return tb


def run(code, namespace, emit, filename='<console>', interactive=True):
    """Runs code in namespace; everything it prints goes to emit(text).
    Returns whether it failed: raised, or asked to exit with a status other than 0."""
    failed = False
    sink = _Sink(emit, sys.__stderr__)
    with contextlib.redirect_stdout(sink), contextlib.redirect_stderr(sink):
        saved_stdin, sys.stdin = sys.stdin, io.StringIO()  # input() ends at once, no wait for a terminal
        try:
            tree = ast.parse(code, filename, 'exec')
            if interactive:
                compiled = compile(ast.Interactive(body=tree.body), filename, 'single')
            else:
                compiled = compile(tree, filename, 'exec')
            exec(compiled, namespace)
        except SystemExit as stop:
            failed = stop.code not in (None, 0)
            print(f'SystemExit({stop.code!r}): the console stays open; close the window to quit.',
                  file=sys.stderr)
        except SyntaxError as error:
            failed = True
            traceback.print_exception(type(error), error, None)
        except BaseException as error:  # KeyboardInterrupt from Stop included
            failed = True
            traceback.print_exception(type(error), error, _user_traceback(error.__traceback__))
        finally:
            sys.stdin = saved_stdin
            sink.close()
    return failed


def arrays(namespace):
    """(name, shape, dtype text, bytes) of each NumPy array the user can see, by name."""
    return sorted((name, tuple(value.shape), str(value.dtype), int(value.nbytes))
                  for name, value in namespace.items()
                  if isinstance(value, numpy.ndarray) and not name.startswith('_'))


def describe(value):
    """What a value is, in a few words: 'str', 'ndarray of int64'."""
    kind = type(value).__name__
    return f'{kind} of {value.dtype}' if isinstance(value, numpy.ndarray) else kind


def workspace_copy(value):
    """value as a C-ordered array in this machine's byte order, when it is an
    array of a type the workspace holds; else None."""
    if not isinstance(value, numpy.ndarray) or f'{value.dtype.kind}{value.dtype.itemsize}' not in WORKSPACE_TYPES:
        return None
    return numpy.ascontiguousarray(value, dtype=value.dtype.newbyteorder('='))


def save(value, path):
    with open(path, 'wb') as file:
        numpy.save(file, value, allow_pickle=False)
