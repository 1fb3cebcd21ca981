// Holds the TextMate grammar against the tokens of vesk's lexer, with the tokeniser of the editor
// that uses it. Reads from standard input {"grammar": path, "texts": [{"name", "text", "tokens":
// [[line, column, length, meaning], ...]}]}; prints a line for each token that the grammar sees as
// something else, and how many it has seen.
import fs from 'node:fs';
import { createRequire } from 'node:module';

const require = createRequire(process.argv[2] + '/');
const oniguruma = require('vscode-oniguruma');
const textmate = require('vscode-textmate');

const SCOPES = {
    comment: /^comment\./,
    keyword: /^keyword\.control\./,
    string: /^(string\.|punctuation\.section\.interpolation\.)/,
    number: /^constant\.numeric\./,
    variable: /^(variable\.other|entity\.name\.function)\./,
    function: /^(variable\.other|entity\.name\.function)\./,
    parameter: /^(variable\.other|entity\.name\.function)\./,
};

const { grammar: path, texts } = JSON.parse(fs.readFileSync(0, 'utf8'));
await oniguruma.loadWASM(fs.readFileSync(require.resolve('vscode-oniguruma/release/onig.wasm')));
const registry = new textmate.Registry({
    onigLib: Promise.resolve({
        createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
        createOnigString: (text) => new oniguruma.OnigString(text),
    }),
    loadGrammar: async () => textmate.parseRawGrammar(fs.readFileSync(path, 'utf8'), path),
});
const grammar = await registry.loadGrammar('source.vesk');

function linesOf(text) {
    let state = textmate.INITIAL;
    return text.split(/\r\n|\n|\r/).map((line) => {
        const result = grammar.tokenizeLine(line, state);
        state = result.ruleStack;
        return result.tokens;
    });
}

let seen = 0;
for (const { name, text, tokens } of texts) {
    const lines = linesOf(text);
    for (const [line, column, length, meaning] of tokens) {
        ++seen;
        // A reference inside a string is more than one name; its first letter tells.
        const found = lines[line].find((each) => each.startIndex <= column && column < each.endIndex);
        const scope = found ? found.scopes[found.scopes.length - 1] : 'nothing';
        const whole = !found || !['keyword', 'number'].includes(meaning) || found.endIndex === column + length;
        if (!SCOPES[meaning].test(scope) || !whole) {
            const word = text.split(/\r\n|\n|\r/)[line].substr(column, length);
            console.log(`${name}:${line + 1}:${column + 1}: '${word}' is a ${meaning}, not ${scope}`);
        }
    }
}
console.log(`${seen} tokens`);
