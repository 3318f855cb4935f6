"""Changes to the text of a layout file before a program opens it."""

FUNCTIONS = 29


def with_all_functions(text, locomotive):
    """One locomotive has all functions that there are, and no others."""
    begin = text.index('functions:', text.index(f'name: {locomotive}')) + len('functions:')
    entries = ''.join(
        f'\n      - name: Function {number}\n        id: {9000 + number}\n        type: Toggle\n'
        f'        decoder: 0\n        function: {number}\n        on_image: ~\n'
        '        off_image: ~' for number in range(FUNCTIONS))
    return text[:begin] + entries + text[text.index('\n  - !lok', begin):]
