-- The language server in Neovim, from 0.7 on.
--
--     require('vesk').setup { cmd = { 'vesk', '--language-server' }, profile = 'debug' }

local vesk = {}

local defaults = { cmd = { 'vesk', '--language-server' }, profile = nil }
local settings = defaults
local clients = {} -- by root

-- The directory of the nearest project file, or the file's own.
local function root_of(buffer)
  local file = vim.api.nvim_buf_get_name(buffer)
  local directory = vim.fn.fnamemodify(file, ':p:h')
  local found = vim.fn.findfile('.vesk_project.txt', vim.fn.escape(directory, ' ') .. ';')
  return found ~= '' and vim.fn.fnamemodify(found, ':p:h') or directory
end

local function run(arguments, target)
  local command = vim.list_extend({ settings.cmd[1] }, arguments)
  if target.file ~= '' then
    vim.list_extend(command, { '-f', target.file })
  end
  vim.cmd('botright new')
  vim.fn.termopen(vim.list_extend(command, { target.target }), { cwd = target.directory })
end

local function define_commands()
  vim.lsp.commands['vesk.build'] = function(command)
    run({}, command.arguments[1])
  end
  vim.lsp.commands['vesk.why'] = function(command)
    run({ '-n', '--why' }, command.arguments[1])
  end
end

function vesk.start(buffer)
  local root = root_of(buffer)
  if not clients[root] then
    clients[root] = vim.lsp.start_client {
      name = 'vesk',
      cmd = settings.cmd,
      root_dir = root,
      init_options = { profile = settings.profile },
      on_exit = function()
        clients[root] = nil
      end,
    }
  end
  if clients[root] then
    vim.lsp.buf_attach_client(buffer, clients[root])
  end
end

function vesk.setup(options)
  settings = vim.tbl_extend('force', defaults, options or {})
  define_commands()
  local group = vim.api.nvim_create_augroup('vesk', { clear = true })
  vim.api.nvim_create_autocmd('FileType', {
    group = group,
    pattern = 'vesk',
    callback = function(event)
      vesk.start(event.buf)
    end,
  })
end

return vesk
