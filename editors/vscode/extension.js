// vesk in VS Code: its language server, tasks that build targets, and what the lenses run.
'use strict';

const vscode = require('vscode');
const { LanguageClient } = require('vscode-languageclient/node');

let client;

function setting(name) {
    return vscode.workspace.getConfiguration('vesk').get(name);
}

/** The arguments that build a target of a lens. */
function argumentsFor(target, more = []) {
    const file = target.file ? ['-f', target.file] : [];
    const profile = setting('profile') && !target.file ? [setting('profile')] : [];
    return [...more, ...file, target.target, ...profile];
}

function taskFor(name, args, directory, scope, definition) {
    const execution = new vscode.ProcessExecution(setting('path'), args, { cwd: directory });
    const matchers = ['$vesk', '$vesk-errors'];
    return new vscode.Task(definition, scope, name, 'vesk', execution, matchers);
}

function run(target, more) {
    const folder = vscode.workspace.getWorkspaceFolder(vscode.Uri.file(target.directory));
    const definition = { type: 'vesk', target: target.target, arguments: more };
    const task = taskFor(target.target, argumentsFor(target, more), target.directory,
                         folder || vscode.TaskScope.Workspace, definition);
    return vscode.tasks.executeTask(task);
}

/** A task for each target that the server knows. */
async function provideTasks() {
    const symbols = client ? await client.sendRequest('workspace/symbol', { query: '' }) : [];
    return (symbols || []).map((symbol) => {
        const unit = symbol.containerName.split('/').pop();
        const target = `${unit}::${symbol.name}`;
        const file = vscode.Uri.parse(symbol.location.uri);
        const folder = vscode.workspace.getWorkspaceFolder(file);
        const directory = vscode.Uri.joinPath(file, '..').fsPath;
        return taskFor(target, argumentsFor({ target }), directory,
                       folder || vscode.TaskScope.Workspace, { type: 'vesk', target });
    });
}

function resolveTask(task) {
    const { target, arguments: more } = task.definition;
    const scope = task.scope || vscode.TaskScope.Workspace;
    const directory = scope.uri ? scope.uri.fsPath : undefined;
    return target ? taskFor(target, argumentsFor({ target }, more || []), directory, scope, task.definition)
                  : undefined;
}

async function chooseProfile() {
    const profile = await vscode.window.showInputBox({
        prompt: 'The profile under which values are shown; empty: none',
        value: setting('profile'),
    });
    if (profile !== undefined) {
        await vscode.workspace.getConfiguration('vesk').update('profile', profile);
    }
}

async function start() {
    const server = { command: setting('path'), args: ['--language-server'] };
    client = new LanguageClient('vesk', 'vesk', server, {
        documentSelector: [{ scheme: 'file', language: 'vesk' }],
        initializationOptions: { profile: setting('profile') },
        synchronize: {
            configurationSection: 'vesk',
            fileEvents: vscode.workspace.createFileSystemWatcher('**/{vesk,.vesk_project,.vesk_registry}.txt'),
        },
    });
    await client.start();
}

async function activate(context) {
    const command = (name, action) =>
        context.subscriptions.push(vscode.commands.registerCommand(name, action));
    command('vesk.build', (target) => run(target, []));
    command('vesk.why', (target) => run(target, ['-n', '--why']));
    command('vesk.chooseProfile', chooseProfile);
    command('vesk.restart', async () => {
        await client.stop();
        await start();
    });
    context.subscriptions.push(vscode.tasks.registerTaskProvider('vesk', { provideTasks, resolveTask }));
    await start();
}

function deactivate() {
    return client ? client.stop() : undefined;
}

module.exports = { activate, deactivate };
